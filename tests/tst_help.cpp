// The help page knows every key.
#include "mainwindow.h"
#include "qiorvoutil.h"
#include "startup.h"
#include "views/viewkeys.h"

#include <QAction>
#include <QFile>
#include <QShortcut>
#include <QtTest>

class TestHelp : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();
    void everyKeyOfTheViewsIsThere_data();
    void everyKeyOfTheViewsIsThere();
    void everyShortcutIsThere();

private:
    /// Of a key such as "Ctrl+E".
    bool knows(const QString& key) const
    {
        return m_keyboard.contains("<kbd>" + key.split('+').join("</kbd>+<kbd>") + "</kbd>");
    }

    QString m_keyboard; ///< the page's part on keys
};

void TestHelp::initTestCase()
{
    Startup::afterApplication();
    QFile page(QIOrvoUtil::getResourcePath() + "/Melodrift for Mac-Orvo/index.html");
    QVERIFY(page.open(QIODevice::ReadOnly));
    m_keyboard = QString::fromUtf8(page.readAll()).section("<h2>Keyboard</h2>", 1);
    QVERIFY(!m_keyboard.isEmpty());
}

void TestHelp::everyKeyOfTheViewsIsThere_data()
{
    QTest::addColumn<QString>("key");
    for (const ViewKeys::Key& each : ViewKeys::all())
        QTest::newRow(qPrintable(each.caption)) << each.caption;
}

void TestHelp::everyKeyOfTheViewsIsThere()
{
    QFETCH(QString, key);
    QVERIFY(knows(key));
}

void TestHelp::everyShortcutIsThere()
{
    const MainWindow window;
    QStringList keys;
    for (const QAction* action : window.findChildren<QAction*>())
        if (!action->shortcut().isEmpty())
            keys.append(action->shortcut().toString());
    for (const QShortcut* shortcut : window.findChildren<QShortcut*>())
        keys.append(shortcut->key().toString());
    QVERIFY(keys.size() >= 4);
    for (const QString& key : keys)
        QVERIFY2(knows(key), qPrintable(key));
}

QTEST_MAIN(TestHelp)
#include "tst_help.moc"
