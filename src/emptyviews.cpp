#include "emptyviews.h"

#include "common/qimagebutton.h"
#include "filechoice.h"
#include "itunes/itunesmusiclibrary.h"
#include "songviews.h"
#include "views/viewnotice.h"

#include <QEvent>

#include <utility>

EmptyViews::EmptyViews(SongViews& views, QWidget* area, std::function<State()> state)
    : QObject(area), m_views(views), m_state(std::move(state)), m_button(new QImageButton(area)),
      m_notice(new ViewNotice(*m_button, area))
{
    m_button->setObjectName(QStringLiteral("m_btnLibrary"));
    m_button->setBtnImage(SkinPicture::path("button_library.png"));
    area->installEventFilter(this);
    connect(m_button, &QImageButton::clicked, this, &EmptyViews::choose);
    connect(&m_look, &LibraryLook::ended, this, &EmptyViews::take);
    connect(&m_views, &SongViews::listShown, this, &EmptyViews::follow);
}

QWidget& EmptyViews::button() const
{
    return *m_button;
}

void EmptyViews::setPlace(const QRect& place)
{
    m_notice->setGeometry(place);
}

/// What nobody sees needs no look for a library.
bool EmptyViews::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show)
        update();
    else if (event->type() == QEvent::WindowActivate && m_isAtLibrary)
        lookAgain();
    return QObject::eventFilter(watched, event);
}

void EmptyViews::follow(int found, int all)
{
    m_found = found;
    m_all = all;
    update();
}

void EmptyViews::update()
{
    const State state = m_state();
    const bool isAtLibrary = state.place == State::Library;
    if (isAtLibrary && !m_isAtLibrary)
        lookAgain();
    m_isAtLibrary = isAtLibrary;
    m_notice->say(text(state));
}

/// Whoever comes back may have put a file there. A look that goes on may have missed it.
void EmptyViews::lookAgain()
{
    m_looksAgain = m_look.isRunning();
    if (!m_looksAgain)
        m_look.begin();
}

EmptyText EmptyViews::text(const State& state)
{
    switch (state.place) {
    case State::DropZone:
        return {};
    case State::Library:
        return libraryText(state);
    case State::Songs:
        break;
    }
    if (m_found > 0)
        return {};
    if (m_all > 0)
        return EmptyTexts::notFound(m_views.lookedFor(), m_all, state.view == EmptyTexts::View::Duplicates);
    return state.isScanned ? EmptyTexts::tidy(state.view) : EmptyTexts::notScanned(state.view);
}

EmptyText EmptyViews::libraryText(const State& state)
{
    if (!m_isLibraryKnown)
        return EmptyTexts::looking();
    return state.isScanned ? EmptyTexts::withoutSongs(m_library, iTunesLastReading())
                           : EmptyTexts::toScan(m_library);
}

void EmptyViews::take(const LibrarySight& sight)
{
    m_library = sight;
    m_isLibraryKnown = true;
    update();
    if (std::exchange(m_looksAgain, false))
        m_look.begin();
}

void EmptyViews::choose()
{
    const QString file = FileChoice::library(m_button->window(), m_library);
    if (file.isEmpty() || m_state().place != State::Library)
        return;
    setITunesLibraryOption(file.toUtf8().constData());
    m_isLibraryKnown = false;
    m_looksAgain = false;
    m_look.begin();
    emit libraryChosen();
    update();
}
