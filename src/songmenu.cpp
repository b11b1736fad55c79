#include "songmenu.h"

#include "common/keyuse.h"
#include "common/style.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "folderopener.h"
#include "musicdetailedinfowidget.h"
#include "songs/songfields.h"
#include "songviews.h"
#include "views/viewkeys.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDir>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>

using ViewKeys::Command;

namespace {
constexpr QPoint placeInRow(60, 50);

/// The key stands at the right; it works without the menu.
QString captionOf(const QString& text, Command command)
{
    return text + QLatin1Char('\t') + ViewKeys::captionOf(command);
}

QString titleAndArtist(const QMusicInfo* song)
{
    QStringList texts = {SongFields::title(song), SongFields::artist(song)};
    texts.removeAll(QString());
    return texts.join(QLatin1String(" - "));
}

void copy(const QString& text)
{
    QGuiApplication::clipboard()->setText(text);
}
} // namespace

SongMenu::SongMenu(const Parts& parts, QWidget* area) : QObject(area), m_parts(parts), m_area(area)
{
    area->installEventFilter(this);
}

/// By keys the menu opens with the key itself, whatever the window system makes of it.
bool SongMenu::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::ContextMenu)
        return false;
    const auto& asked = *static_cast<QContextMenuEvent*>(event);
    if (asked.reason() == QContextMenuEvent::Mouse)
        openAt(asked.globalPos());
    return true;
}

void SongMenu::open(QAbstractItemView& view)
{
    DupMusicbarWidget* const row = m_parts.views.showsGroups(view) ? m_parts.rows.rowAtHand() : nullptr;
    const QModelIndex marked = view.currentIndex();
    if (row) {
        m_parts.rows.moveRowAtHand(0);
        openFor(*row, row->mapToGlobal(placeInRow));
    } else if (marked.isValid()) {
        view.scrollTo(marked);
        openFor(view, marked, view.viewport()->mapToGlobal(view.visualRect(marked).center()));
    }
}

/// A click comes first, since what shows is what the menu is for.
void SongMenu::openAt(const QPoint& place)
{
    QAbstractItemView* const view = m_parts.views.shownView();
    const QPoint inView = view ? view->viewport()->mapFromGlobal(place) : QPoint();
    if (view && view->isEnabled() && view->viewport()->rect().contains(inView)) {
        const QModelIndex index = view->indexAt(inView);
        if (!index.isValid())
            return;
        emit view->clicked(index);
        openFor(*view, index, place);
    } else if (DupMusicbarWidget* row = m_parts.rows.rowAt(place)) {
        m_parts.rows.setRowAtHand(row);
        openFor(*row, place);
    }
}

/// What the menu is for may be gone by the time that something is chosen, as with a switch of modes.
void SongMenu::openFor(QAbstractItemView& view, const QModelIndex& index, const QPoint& place)
{
    const QPersistentModelIndex kept(index);
    const SongViews& views = m_parts.views;
    popUp({[&views, &view, kept] { return views.firstSongOf(view, kept); },
           [&view, kept] { emit view.doubleClicked(kept); }, true},
          place);
}

void SongMenu::openFor(DupMusicbarWidget& row, const QPoint& place)
{
    const QPointer<DupMusicbarWidget> kept(&row);
    popUp({[kept] { return kept ? kept->song() : nullptr; }, [kept] { kept->SlotOnBtnPlay(); }, false},
          place);
}

void SongMenu::popUp(const Subject& subject, const QPoint& place)
{
    const QMusicInfo* const song = subject.song();
    MusicDetailedInfoWidget& details = m_parts.details;
    if (!song || details.isIdentifying())
        return;
    auto* menu = new QMenu(m_area);
    menu->setObjectName(QStringLiteral("m_songMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setFont(Style::font(12));
    const auto add = [this, menu, subject](const QString& text, const std::function<void(QMusicInfo*)>& act) {
        return menu->addAction(text, this, [subject, act] {
            if (QMusicInfo* song = subject.song())
                act(song);
        });
    };
    const QString play = QStringLiteral("Play");
    add(subject.playsByKey ? captionOf(play, Command::Play) : play,
        [subject](QMusicInfo*) { subject.play(); });
    add(captionOf(QStringLiteral("Edit"), Command::Edit),
        [&details](QMusicInfo* song) { details.edit(song); });
    add(QStringLiteral("Identify"), [&details](QMusicInfo* song) {
        details.identify(song);
    })->setEnabled(details.song() != song || !details.isEditing());
    menu->addSeparator();
    add(QStringLiteral("Show in folder"),
        [this](QMusicInfo* song) { emit told(FolderOpener::show(SongFields::location(song))); });
    add(QStringLiteral("Copy path"), [](QMusicInfo* song) {
        copy(QDir::toNativeSeparators(SongFields::audioPath(song)));
    })->setEnabled(!SongFields::audioPath(song).isEmpty());
    add(QStringLiteral("Copy title and artist"), [](QMusicInfo* song) {
        copy(titleAndArtist(song));
    })->setEnabled(!titleAndArtist(song).isEmpty());
    menu->popup(place);
    if (KeyUse::instance().leads())
        menu->setActiveAction(menu->actions().first());
}
