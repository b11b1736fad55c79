#include "common/footline.h"
#include "common/style.h"
#include "common/textlink.h"
#include "restwatch.h"

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

namespace {
/// What it says of a song whose title is long.
QString longText()
{
    return QStringLiteral("Saved \"%1\".").arg(QString(600, QLatin1Char('x')));
}

FootText withLinks(const QString& text, const QStringList& captions, QStringList* clicked)
{
    FootText told{text, false, {}};
    for (const QString& caption : captions)
        told.links.append({caption, [caption, clicked] { clicked->append(caption); }});
    return told;
}
} // namespace

class TestFootLine : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_line.reset(); }

    void anEmptyLinePaintsNothing();
    void theTextBeginsAtTheLeft();
    void aFailureBeginsWithAMark();
    void whatDoesNotFitIsInTheToolTip();
    void breaksAreBlanks();
    void aLinkActsWhenItIsClicked();
    void aLinkActsByKeys();
    void aLinkMayTellSomethingElse();
    void linksStayWhole();
    void aLinkOfItsOwnSizeShowsItsWholeCaption();
    void aLinkIsUnderlinedUnderTheMouseOnly();
    void itIsAStatus();
    void aWiderLineShowsMore();
    void anOfferStandsBehindWhateverIsTold();
    void itRests();

private:
    QList<TextLink*> links() const
    {
        QList<TextLink*> shown;
        for (TextLink* link : m_line->findChildren<TextLink*>())
            if (!link->isHidden())
                shown.append(link);
        return shown;
    }
    /// The points that were painted, from left to right.
    QRect painted() const
    {
        QImage image(m_line->size(), QImage::Format_ARGB32);
        image.fill(Qt::white);
        m_line->render(&image);
        QRect used;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) != QColor(Qt::white).rgb())
                    used |= QRect(x, y, 1, 1);
        return used;
    }

    std::unique_ptr<FootLine> m_line;
    QStringList m_clicked;
};

void TestFootLine::init()
{
    m_line = std::make_unique<FootLine>();
    QPalette palette(Qt::white);
    m_line->setPalette(palette);
    m_line->resize(500, 26);
    m_line->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_line.get(), patience));
    m_clicked.clear();
}

void TestFootLine::anEmptyLinePaintsNothing()
{
    QVERIFY(painted().isNull());
    m_line->tell({"Something", true, {}});
    QVERIFY(!painted().isNull());
    m_line->clear();
    QVERIFY(painted().isNull());
    QCOMPARE(m_line->toolTip(), QString());
}

void TestFootLine::theTextBeginsAtTheLeft()
{
    m_line->tell({"Identified by sound.", false, {}});
    QCOMPARE(m_line->text(), QString("Identified by sound."));
    QCOMPARE(m_line->font().family(), Style::family());
    QCOMPARE(m_line->font().pointSize(), 12);
    const QRect used = painted();
    QVERIFY2(used.left() >= 12 && used.left() <= 14, qPrintable(QString::number(used.left())));
    QVERIFY(used.top() > 2 && used.bottom() < 24);
}

void TestFootLine::aFailureBeginsWithAMark()
{
    m_line->tell({"Not identified.", false, {}});
    const int plain = painted().right();
    m_line->tell({"Not identified.", true, {}});
    QImage image(m_line->size(), QImage::Format_ARGB32);
    image.fill(Qt::white);
    m_line->render(&image);
    QCOMPARE(image.pixelColor(14, 13), QColor(Style::danger));
    QVERIFY(painted().right() > plain);
}

void TestFootLine::whatDoesNotFitIsInTheToolTip()
{
    m_line->tell({"Identified by sound.", false, {}});
    QCOMPARE(m_line->toolTip(), QString());
    m_line->tell({longText(), false, {}});
    QCOMPARE(m_line->toolTip(), longText());
    QVERIFY(painted().right() < 500 - 11);
    QVERIFY(painted().right() > 450);
}

void TestFootLine::breaksAreBlanks()
{
    m_line->tell({QString("Saved \"One\nTwo\tThree%1Four\".").arg(QChar(QChar::LineSeparator)), false, {}});
    QCOMPARE(m_line->text(), QString("Saved \"One Two Three Four\"."));
}

void TestFootLine::aLinkActsWhenItIsClicked()
{
    m_line->tell(withLinks("Gone.", {"Undo", "Next group"}, &m_clicked));
    QCOMPARE(links().size(), 2);
    QTest::mouseClick(links().at(1), Qt::LeftButton);
    QTest::mouseClick(links().at(0), Qt::LeftButton);
    QCOMPARE(m_clicked, QStringList({"Next group", "Undo"}));
    QVERIFY(links().at(0)->x() > 12);
    QVERIFY(links().at(1)->x() > links().at(0)->geometry().right());
    m_line->tell({"Next.", false, {}});
    QCOMPARE(links().size(), 0);
}

void TestFootLine::aLinkActsByKeys()
{
    m_line->tell(withLinks("Left.", {"Edit again"}, &m_clicked));
    m_line->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_line.get(), patience));
    QTest::mouseClick(links().first(), Qt::LeftButton);
    QVERIFY(!links().first()->hasFocus());
    QTest::keyClick(m_line.get(), Qt::Key_Tab);
    QVERIFY(links().first()->hasFocus());
    QTest::keyClick(links().first(), Qt::Key_Return);
    QTest::keyClick(links().first(), Qt::Key_Space);
    QCOMPARE(m_clicked.size(), 3);
}

void TestFootLine::aLinkMayTellSomethingElse()
{
    FootText told{"First.", false, {}};
    told.links.append({"More", [this] { m_line->tell(withLinks("Second.", {"Again"}, &m_clicked)); }});
    m_line->tell(told);
    QTest::mouseClick(links().first(), Qt::LeftButton);
    QCOMPARE(m_line->text(), QString("Second."));
    QCOMPARE(links().size(), 1);
    QTest::mouseClick(links().first(), Qt::LeftButton);
    QCOMPARE(m_clicked, QStringList("Again"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(m_line->findChildren<TextLink*>().size(), 2); // with the place of an offer
}

void TestFootLine::linksStayWhole()
{
    m_line->tell(withLinks(longText(), {"Undo", "Next group"}, &m_clicked));
    for (TextLink* link : links()) {
        QCOMPARE(link->width(), link->sizeHint().width());
        QVERIFY(link->height() >= link->sizeHint().height());
        QCOMPARE(link->geometry().top(), m_line->height() - 1 - link->geometry().bottom());
        QVERIFY(m_line->rect().contains(link->geometry()));
    }
    QVERIFY(!links().at(0)->geometry().intersects(links().at(1)->geometry()));
}

/// Fonts have widths in fractions of points, which are rounded down as well as up.
void TestFootLine::aLinkOfItsOwnSizeShowsItsWholeCaption()
{
    constexpr int more = 40;
    for (const qreal spacing : {0.0, 0.05, 0.1, 0.15, 0.2, 0.25}) {
        TextLink link("Show");
        QFont font = link.font();
        font.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
        link.setFont(font);
        const QSize size = link.sizeHint();
        link.resize(size);
        const QImage own = link.grab().toImage();
        link.resize(size.width() + more, size.height());
        QCOMPARE(own, link.grab().toImage().copy(QRect(QPoint(more / 2, 0), size)));
    }
}

void TestFootLine::aLinkIsUnderlinedUnderTheMouseOnly()
{
    m_line->tell(withLinks("Left.", {"mmm"}, &m_clicked));
    TextLink* link = links().first();
    const auto picture = [link] { return link->grab().toImage(); };
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(link, &leave);
    link->setAttribute(Qt::WA_UnderMouse, false);
    const QImage plain = picture();
    link->setAttribute(Qt::WA_UnderMouse, true);
    QVERIFY(picture() != plain);
    link->setAttribute(Qt::WA_UnderMouse, false);
    QCOMPARE(picture(), plain);
    QCOMPARE(link->cursor().shape(), Qt::PointingHandCursor);
}

void TestFootLine::itIsAStatus()
{
    m_line->tell(withLinks(longText(), {"Undo"}, &m_clicked));
    QAccessibleInterface* status = QAccessible::queryAccessibleInterface(m_line.get());
    QVERIFY(status);
    QCOMPARE(status->role(), QAccessible::StatusBar);
    QCOMPARE(status->text(QAccessible::Name), longText());
    QAccessibleInterface* link = QAccessible::queryAccessibleInterface(links().first());
    QCOMPARE(link->text(QAccessible::Name), QString("Undo"));
}

void TestFootLine::aWiderLineShowsMore()
{
    const QString text = QString("Saved \"%1\".").arg(QString(90, QLatin1Char('m')));
    m_line->tell(withLinks(text, {"Undo"}, &m_clicked));
    QCOMPARE(m_line->toolTip(), text);
    m_line->resize(3000, 26);
    QCOMPARE(m_line->toolTip(), QString());
    QVERIFY(links().first()->x() > 500);
}

void TestFootLine::anOfferStandsBehindWhateverIsTold()
{
    const auto captions = [this] {
        QStringList found;
        QList<TextLink*> shown = links();
        std::sort(shown.begin(), shown.end(), [](auto* a, auto* b) { return a->x() < b->x(); });
        for (const TextLink* link : qAsConst(shown))
            found.append(link->text());
        return found;
    };
    m_line->offer({"Undo", [this] { m_clicked.append("Undo"); }, "Takes back <b>all</b>"});
    QCOMPARE(captions(), QStringList("Undo"));
    TextLink* const offer = links().first();
    QVERIFY(offer->toolTip().contains("&lt;b&gt;all"));
    m_line->tell(withLinks("2 songs moved to the trash.", {"Next group"}, &m_clicked));
    QCOMPARE(captions(), QStringList({"Next group", "Undo"}));
    QTest::mouseClick(offer, Qt::LeftButton);
    QCOMPARE(m_clicked, QStringList("Undo"));
    m_line->tell(withLinks(longText(), {"Edit again"}, &m_clicked));
    QVERIFY(painted().right() < m_line->width() - 12);
    QVERIFY(offer->geometry().right() <= m_line->width() - 12);
    TextLink* const again = offer == links().first() ? links().last() : links().first();
    again->setFocus(Qt::TabFocusReason);
    QTest::keyClick(again, Qt::Key_Tab); // in the order in which they stand
    QCOMPARE(QApplication::focusWidget(), offer);
    m_line->clear();
    QCOMPARE(captions(), QStringList("Undo"));
    m_line->offer({});
    QCOMPARE(captions(), QStringList());
    QVERIFY(painted().isNull());
}

void TestFootLine::itRests()
{
    m_line->tell(withLinks("Left.", {"Edit again"}, &m_clicked));
    RestWatch watch;
    QVERIFY2(watch.rests(), qPrintable(watch.happened()));
}

QTEST_MAIN(TestFootLine)
#include "tst_footline.moc"
