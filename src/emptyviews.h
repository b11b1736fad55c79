#pragma once

#include "librarylook.h"
#include "songs/emptytexts.h"

#include <QObject>

#include <functional>

class QImageButton;
class QRect;
class QWidget;
class SongViews;
class ViewNotice;

/// Says in the middle of the content area why the view there has nothing to show: that nothing is found, that
/// all is tidy, that nothing was scanned yet. Before a scan of the music library it says which file that will
/// read, and lets the user choose another one for this run. GUI thread only.
class EmptyViews : public QObject
{
    Q_OBJECT

public:
    /// What the area is at.
    struct State
    {
        enum Place { DropZone, Library, Songs }; ///< without songs there is either of the former

        Place place = Library;
        EmptyTexts::View view = EmptyTexts::View::All;
        bool isScanned = false;
    };

    /// What the views show is followed; all else is asked of `state`. The views are children of the area.
    EmptyViews(SongViews& views, QWidget* area, std::function<State()> state);

    QWidget& button() const;
    /// Where the views are.
    void setPlace(const QRect& place);
    /// After a change of state.
    void update();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The next scan reads another library file.
    void libraryChosen();

private:
    void follow(int found, int all);
    EmptyText text(const State& state);
    EmptyText libraryText(const State& state);
    void lookAgain();
    void take(const LibrarySight& sight);
    void choose();

    SongViews& m_views;
    const std::function<State()> m_state;
    QImageButton* m_button;
    ViewNotice* m_notice;
    LibraryLook m_look;
    LibrarySight m_library;
    bool m_isLibraryKnown = false;
    bool m_isAtLibrary = false;
    bool m_looksAgain = false; ///< after the look that goes on
    int m_found = 0;
    int m_all = 0;
};
