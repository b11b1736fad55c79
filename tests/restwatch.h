#pragma once

#include <QApplication>
#include <QMap>
#include <QPair>
#include <QStringList>
#include <QtTest>
#include <QVector>
#include <QWidget>

#include <algorithm>

/// Hears of every event of the application's thread, and so tells whether anything still runs in it.
class RestWatch : public QObject
{
public:
    RestWatch() { qApp->installEventFilter(this); }

    /// Waits until a second has passed in which nothing was painted or laid out and no timer ran, and then
    /// says whether that stays so for five more. Time is counted in turns of the event loop: a machine that
    /// gives the process no time lets no event come either.
    bool rests()
    {
        forget();
        int quiet = 0;
        for (int turn = 0; turn < mostTurnsBefore && quiet < second; ++turn) {
            const int before = m_events;
            QTest::qWait(turnMilliseconds);
            quiet = m_events == before ? quiet + 1 : 0;
        }
        if (quiet < second)
            return false;
        forget();
        for (int turn = 0; turn < 5 * second; ++turn)
            QTest::qWait(turnMilliseconds);
        return m_happened.isEmpty();
    }
    /// The 20 ms timers of played songs run for good.
    void setTimersAllowed() { m_timersAllowed = true; }
    void forget() { m_happened.clear(); }
    /// What happened since, the most frequent first.
    QString happened() const
    {
        QVector<QPair<int, QString>> lines;
        for (auto it = m_happened.begin(); it != m_happened.end(); ++it)
            lines.append({-it.value(), it.key()});
        std::sort(lines.begin(), lines.end());
        QStringList texts;
        for (const auto& line : lines)
            texts.append(QStringLiteral("%1 x %2").arg(-line.first).arg(line.second));
        return texts.join(QStringLiteral(", "));
    }
    /// How often the widget was painted since.
    int paintings(const QWidget* widget) const { return m_happened.value(line(widget, QEvent::Paint)); }
    /// The widgets that were moved, resized or dressed anew while they or what they lie in were being
    /// painted.
    QStringList placedWhilePainting;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Timer:
            // The toolkit looks through its pictures every ten seconds for some that nobody shows any more.
            if (m_timersAllowed || watched->inherits("QPMCache"))
                break;
            [[fallthrough]];
        case QEvent::Paint:
        case QEvent::UpdateRequest:
        case QEvent::LayoutRequest:
            ++m_happened[line(watched, event->type())];
            ++m_events;
            break;
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::FontChange:
        case QEvent::PaletteChange:
        case QEvent::StyleChange:
            if (isBeingPainted(watched))
                placedWhilePainting.append(line(watched, event->type()));
            break;
        default:
            break;
        }
        return false;
    }

private:
    static constexpr int turnMilliseconds = 10;
    static constexpr int second = 1000 / turnMilliseconds;
    static constexpr int mostTurnsBefore = 60 * second;

    static QString line(const QObject* watched, QEvent::Type type)
    {
        return QStringLiteral("%1 of %2 %3 (%4)")
            .arg(QMetaEnum::fromType<QEvent::Type>().valueToKey(type), watched->metaObject()->className(),
                 watched->objectName())
            .arg(quintptr(watched), 0, 16);
    }
    static bool isBeingPainted(const QObject* watched)
    {
        for (; watched; watched = watched->parent()) {
            const auto* widget = qobject_cast<const QWidget*>(watched);
            if (widget && widget->testAttribute(Qt::WA_WState_InPaintEvent))
                return true;
        }
        return false;
    }

    QMap<QString, int> m_happened;
    int m_events = 0;
    bool m_timersAllowed = false;
};
