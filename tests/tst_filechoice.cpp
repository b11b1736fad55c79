#include "filechoice.h"
#include "guidriver.h"
#include "songs/librarysight.h"
#include "startup.h"

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

class TestFileChoice : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        Startup::beforeApplication();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

private slots:
    void initTestCase();
    void init();
    void theDialogOpensWithoutAName_data();
    void theDialogOpensWithoutAName();
    void picturesAreLookedForWhereTheyAre();
    void librariesAreLookedForWhereOneIs_data();
    void librariesAreLookedForWhereOneIs();

private:
    /// What a dialog shows when it opens; it is closed without a choice.
    struct Opened
    {
        QString title;
        QString folder;
        QString name;
    };
    static Opened look(const std::function<void()>& open);
    QString inHome(const QString& name) const { return m_home->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_home;
};

void TestFileChoice::initTestCase()
{
    Startup::afterApplication();
    qunsetenv("XDG_CONFIG_HOME");
}

/// A home in which there is nothing yet.
void TestFileChoice::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", QFile::encodeName(m_home->path()));
    if (!QStandardPaths::writableLocation(QStandardPaths::PicturesLocation).startsWith(m_home->path()))
        QSKIP("the folders are the system's");
}

TestFileChoice::Opened TestFileChoice::look(const std::function<void()>& open)
{
    Opened opened;
    DialogDriver dialogs;
    dialogs.expect([&opened](QWidget* widget) {
        const auto* const dialog = qobject_cast<QFileDialog*>(widget);
        opened = {dialog->windowTitle(), dialog->directory().path(),
                  dialog->findChild<QLineEdit*>("fileNameEdit")->text()};
        widget->close();
    });
    open();
    return opened;
}

void TestFileChoice::theDialogOpensWithoutAName_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<QString>("title");
    QTest::newRow("music") << 0 << "open";
    QTest::newRow("picture") << 1 << "Open File";
    QTest::newRow("library") << 2 << "Choose library file";
}

void TestFileChoice::theDialogOpensWithoutAName()
{
    QFETCH(int, which);
    const std::function<void()> choices[] = {[] { FileChoice::music(nullptr); },
                                             [] { FileChoice::picture(nullptr); },
                                             [] { FileChoice::library(nullptr, LibrarySight()); }};
    const Opened opened = look(choices[which]);
    QTEST(opened.title, "title");
    QCOMPARE(opened.name, QString());
}

void TestFileChoice::picturesAreLookedForWhereTheyAre()
{
    const auto choose = [] { FileChoice::picture(nullptr); };
    QCOMPARE(look(choose).folder, m_home->path());
    QDir(m_home->path()).mkdir("Pictures");
    QCOMPARE(look(choose).folder, inHome("Pictures"));
}

void TestFileChoice::librariesAreLookedForWhereOneIs_data()
{
    QTest::addColumn<bool>("isThere");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("opened");
    QTest::newRow("one is known") << true << QStringList() << "/named";
    QTest::newRow("none was found") << false << QStringList({"/music/iTunes", "/music"}) << "/music";
    QTest::newRow("nothing is there") << false << QStringList({"/gone/iTunes", "/gone"}) << "";
    QTest::newRow("nobody looked yet") << false << QStringList() << "";
}

void TestFileChoice::librariesAreLookedForWhereOneIs()
{
    QFETCH(bool, isThere);
    QFETCH(QStringList, folders);
    QFETCH(QString, opened);
    for (const char* folder : {"named", "music"})
        QDir(m_home->path()).mkdir(folder);
    LibrarySight library;
    library.isThere = isThere;
    library.file = inHome("named/Library.xml");
    for (const QString& folder : folders)
        library.folders.append(m_home->path() + folder);
    QCOMPARE(look([&library] { FileChoice::library(nullptr, library); }).folder, m_home->path() + opened);
}

QTEST_MAIN(TestFileChoice)
#include "tst_filechoice.moc"
