#include "common/messagedialog.h"
#include "common/qimagebutton.h"
#include "introducethissofedialog.h"
#include "qiorvoutil.h"

#include <QLabel>
#include <QTimer>
#include <QtTest>

namespace {
QString skin(const char* name)
{
    return QIOrvoUtil::getResourcePath() + "/Image/" + name;
}

template <typename Widget>
Widget* part(QWidget& window, const char* name)
{
    return window.findChild<Widget*>(name);
}
} // namespace

class TestMessageDialog : public QObject
{
    Q_OBJECT

private slots:
    void laysItsPartsOut();
    void onlyTheActionButtonAnswersOne_data();
    void onlyTheActionButtonAnswersOne();
    void emptyPathsChangeNoButton();
    void theSecondButtonSaysContinue();
    void aLongTextStaysInItsBox();
    void theAboutBoxTellsAndCloses();
};

void TestMessageDialog::laysItsPartsOut()
{
    MessageDialog dialog;
    QCOMPARE(dialog.size(), QSize(441, 145));
    QCOMPARE(dialog.windowTitle(), QString("Melodrift"));
    QVERIFY(dialog.testAttribute(Qt::WA_TranslucentBackground));
    auto* text = part<QLabel>(dialog, "m_labContent");
    QCOMPARE(text->geometry(), QRect(30, 30, 401, 51));
    QCOMPARE(text->font().pointSize(), 13);
    QCOMPARE(text->font().family(), QString("Tahoma"));
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        QCOMPARE(text->palette().color(group, QPalette::WindowText), QColor(Qt::black));
    QCOMPARE(part<QImageButton>(dialog, "m_btnType")->pos(), QPoint(190, 100));
    QCOMPARE(part<QImageButton>(dialog, "m_btnCancel")->geometry(), QRect(310, 100, 114, 32));
}

void TestMessageDialog::onlyTheActionButtonAnswersOne_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<int>("answer");
    QTest::newRow("action") << "m_btnType" << 1;
    QTest::newRow("second") << "m_btnCancel" << 0;
    QTest::newRow("escape") << "escape" << 0;
    QTest::newRow("frame") << "close" << 0;
}

void TestMessageDialog::onlyTheActionButtonAnswersOne()
{
    QFETCH(QString, way);
    QFETCH(int, answer);
    MessageDialog dialog;
    dialog.setMessageContect("Text");
    dialog.SetButtonTypeImage(skin("button_ok.png"), QString());
    QTimer::singleShot(0, &dialog, [&dialog, way] {
        if (way == "escape")
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else if (way == "close")
            dialog.close();
        else
            QTest::mouseClick(dialog.findChild<QImageButton*>(way), Qt::LeftButton);
    });
    QCOMPARE(dialog.exec(), answer);
    QVERIFY(!dialog.isVisible());
}

void TestMessageDialog::emptyPathsChangeNoButton()
{
    MessageDialog dialog;
    dialog.SetButtonTypeImage(skin("button_ok.png"), skin("button_cancel.png"));
    auto* action = part<QImageButton>(dialog, "m_btnType");
    auto* second = part<QImageButton>(dialog, "m_btnCancel");
    QCOMPARE(second->accessibleName(), QString("Cancel"));
    const QImage before = action->grab().toImage();
    const QImage secondBefore = second->grab().toImage();
    dialog.SetButtonTypeImage("", "");
    QCOMPARE(action->grab().toImage(), before);
    QCOMPARE(second->grab().toImage(), secondBefore);
}

void TestMessageDialog::theSecondButtonSaysContinue()
{
    MessageDialog dialog;
    auto* second = part<QImageButton>(dialog, "m_btnCancel");
    QVERIFY(!second->isHidden());
    QImageButton expected;
    expected.setBtnImage(skin("button_continue.png"));
    QCOMPARE(second->accessibleName(), expected.accessibleName());
    dialog.SetCancelButtonHidden(true);
    QVERIFY(second->isHidden());
    dialog.SetCancelButtonHidden(false);
    QVERIFY(!second->isHidden());
}

void TestMessageDialog::aLongTextStaysInItsBox()
{
    MessageDialog dialog;
    dialog.setMessageContect(QString("word ").repeated(500));
    QCOMPARE(part<QLabel>(dialog, "m_labContent")->geometry(), QRect(30, 30, 401, 51));
    QCOMPARE(dialog.size(), QSize(441, 145));
}

void TestMessageDialog::theAboutBoxTellsAndCloses()
{
    IntroduceThisSofeDialog about;
    QCOMPARE(about.windowTitle(), QString("Melodrift"));
    QCOMPARE(about.size(), QSize(460, 300));
    const auto text = [&about](const char* name) { return about.findChild<QLabel*>(name)->text(); };
    QCOMPARE(text("m_labSoftName"), QString("Melodrift"));
    QCOMPARE(text("m_labVersion"), QString("Version 1.0 Build Date 2014-07-15"));
    QCOMPARE(text("m_labSoftWeb"), QString("Website:"));
    QCOMPARE(text("m_lablaw"),
             QString("This program is protected by copyright law and international treaties."));
    QCOMPARE(text("m_labgszo"),
             QString("Unauthorized reproduction or distribution of this program is strictly prohibited."));
    QCOMPARE(text("m_labCopy"), QString::fromUtf8("Copyright © 2014-2026 The Melodrift team"));
    auto* link = about.findChild<QLabel*>("m_labLink");
    QVERIFY(link->text().contains("<a href=\"https://"));
    QVERIFY(link->openExternalLinks());
    QCOMPARE(link->font().pointSize(), 13);
    auto* ok = about.findChild<QImageButton*>("m_btnOk");
    QCOMPARE(ok->size(), QSize(114, 32)); // its picture is named without an extension
    // Every text has room.
    for (const QLabel* label : about.findChildren<QLabel*>())
        if (!label->text().isEmpty())
            QVERIFY2(label->heightForWidth(label->width()) <= label->height() + 4,
                     qPrintable(label->objectName()));
    QTimer::singleShot(0, &about, [ok] { QTest::mouseClick(ok, Qt::LeftButton); });
    about.exec();
    QVERIFY(!about.isVisible());
}

QTEST_MAIN(TestMessageDialog)
#include "tst_messagedialog.moc"
