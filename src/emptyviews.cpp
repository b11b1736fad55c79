#include "emptyviews.h"

#include "common/qimagebutton.h"
#include "common/skinpicture.h"
#include "common/skinwords.h"
#include "filechoice.h"
#include "itunes/itunesmusiclibrary.h"
#include "songs/modesongs.h"
#include "songviews.h"
#include "viewinsight.h"
#include "views/viewfocus.h"
#include "views/viewnotice.h"

#include <QEvent>

#include <utility>

namespace {
constexpr int patienceMilliseconds = 200;
constexpr char libraryPicture[] = "button_library.png";
} // namespace

EmptyViews::EmptyViews(const Parts& parts, QWidget* area)
    : QObject(area), m_parts(parts), m_button(new QImageButton(area)),
      m_notice(new ViewNotice(*m_button, area))
{
    m_button->setObjectName(QStringLiteral("m_btnLibrary"));
    m_button->setAccessibleName(SkinWords::of(QLatin1String(libraryPicture)).name);
    QWidget::setTabOrder(&m_parts.inSight.focus(), m_button);
    m_patience.setSingleShot(true);
    m_patience.setInterval(patienceMilliseconds);
    area->installEventFilter(this);
    connect(&m_patience, &QTimer::timeout, this, &EmptyViews::update);
    connect(m_button, &QImageButton::clicked, this, &EmptyViews::choose);
    connect(&m_look, &LibraryLook::ended, this, &EmptyViews::take);
    connect(&m_parts.views, &SongViews::listShown, this, &EmptyViews::follow);
}

void EmptyViews::setPlace(const QRect& place)
{
    m_notice->setGeometry(place);
}

/// The first picture of the window waits for nothing of this.
bool EmptyViews::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint && !std::exchange(m_isSeen, true))
        QTimer::singleShot(0, this, &EmptyViews::begin);
    else if (event->type() == QEvent::WindowActivate && m_wasAtLibrary)
        lookAgain();
    return QObject::eventFilter(watched, event);
}

void EmptyViews::begin()
{
    m_button->setBtnImage(SkinPicture::path(libraryPicture));
    update();
}

void EmptyViews::follow(int found, int all)
{
    m_found = found;
    m_all = all;
    update();
}

void EmptyViews::update()
{
    if (!m_isSeen)
        return;
    if (!std::exchange(m_wasAtLibrary, isAtLibrary()) && isAtLibrary())
        lookAgain();
    m_notice->say(text());
}

/// The mode without a place for drops, before there are songs.
bool EmptyViews::isAtLibrary() const
{
    return m_parts.songs.all().isEmpty() && !m_parts.inSight.dropsAreSeen();
}

EmptyText EmptyViews::text() const
{
    if (m_parts.inSight.dropsAreSeen())
        return {};
    if (isAtLibrary())
        return libraryText();
    if (m_found > 0)
        return {};
    const bool groups = m_parts.inSight.kind() == ViewInSight::Kind::Duplicates;
    if (m_all > 0)
        return EmptyTexts::notFound(m_parts.views.lookedFor(), m_all, groups);
    return m_parts.songs.classification().isDone() ? EmptyTexts::tidy(groups)
                                                   : EmptyTexts::notScanned(groups);
}

EmptyText EmptyViews::libraryText() const
{
    if (!m_isLibraryKnown)
        return m_patience.isActive() ? EmptyText() : EmptyTexts::looking();
    return m_parts.songs.classification().isDone() ? EmptyTexts::withoutSongs(m_library, iTunesLastReading())
                                                   : EmptyTexts::toScan(m_library);
}

void EmptyViews::look()
{
    m_patience.start();
    m_look.begin();
}

/// Whoever comes back may have put a file there. A look that goes on may have missed it.
void EmptyViews::lookAgain()
{
    m_looksAgain = m_look.isRunning();
    if (!m_looksAgain)
        look();
}

void EmptyViews::take(const LibrarySight& sight)
{
    m_patience.stop();
    m_library = sight;
    m_isLibraryKnown = true;
    update();
    if (std::exchange(m_looksAgain, false))
        look();
}

void EmptyViews::choose()
{
    const QString file = FileChoice::library(m_button->window(), m_library);
    if (file.isEmpty() || !isAtLibrary())
        return;
    setITunesLibraryOption(file.toUtf8().constData());
    m_isLibraryKnown = false;
    m_looksAgain = false;
    look();
    emit libraryChosen();
    update();
}
