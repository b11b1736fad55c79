#include "centerfoot.h"

#include "songs/removaltally.h"

void CenterFoot::tell(const FootText& told)
{
    if (!told.text.isEmpty())
        emit this->told(told);
}

void CenterFoot::tellOfDeletion(const RemovalTally& tally, int nextGroup)
{
    QVector<FootText::Link> links;
    if (nextGroup >= 0) {
        links.append({QStringLiteral("Next group"), [this, nextGroup] { emit groupChosen(nextGroup); }});
        links.last().once = true;
    }
    m_undo.endDeletion(tally);
    tell({tally.line(), tally.failed(), links});
    offerUndo();
}

void CenterFoot::offerUndo()
{
    const QString change = m_undo.next();
    emit undoOffered(change.isEmpty() ? FootText::Link()
                                      : FootText::Link{QStringLiteral("Undo"), [this] { emit undoChosen(); },
                                                       QStringLiteral("Takes back %1 (Ctrl+Z)").arg(change)});
}

void CenterFoot::takeBack(const SongLists& lists, QWidget& window)
{
    if (m_undo.next().isEmpty())
        return;
    m_work.run({"taking a change back", QStringLiteral("Taking back…"),
                [this](const Progress& progress) { m_undo.takeBack(progress); }},
               window);
    const SongUndo::Undone undone = m_undo.finish(lists);
    if (undone.edited || !undone.returned.isEmpty())
        emit this->undone(undone);
    tell({undone.line, undone.failed, {}});
    offerUndo();
}

void CenterFoot::forgetSteps()
{
    m_undo.forgetChanges();
    offerUndo();
}

void CenterFoot::forgetChanges()
{
    m_undo.forget();
    offerUndo();
}
