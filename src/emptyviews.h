#pragma once

#include "librarylook.h"
#include "songs/emptytexts.h"

#include <QObject>
#include <QTimer>

class ModeSongs;
class QImageButton;
class QRect;
class QWidget;
class SongViews;
class ViewInSight;
class ViewNotice;

/// Says in the middle of the content area why the view there has nothing to show: that nothing is found, that
/// all is tidy, that nothing was scanned yet. Before a scan of the music library it says which file that will
/// read, and lets the user choose another one for this run. GUI thread only.
class EmptyViews : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        SongViews& views; ///< what they show is followed
        const ModeSongs& songs;
        const ViewInSight& inSight;
    };

    /// The area holds the views and owns this.
    EmptyViews(const Parts& parts, QWidget* area);

    /// Where the views are.
    void setPlace(const QRect& place);
    /// After a change of the mode.
    void update();
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The next scan reads another library file.
    void libraryChosen();

private:
    void begin();
    void follow(int found, int all);
    bool isAtLibrary() const;
    EmptyText text() const;
    EmptyText libraryText() const;
    void look();
    void lookAgain();
    void take(const LibrarySight& sight);
    void choose();

    const Parts m_parts;
    QImageButton* m_button;
    ViewNotice* m_notice;
    LibraryLook m_look;
    LibrarySight m_library;
    QTimer m_patience; ///< with a look
    bool m_isSeen = false;
    bool m_isLibraryKnown = false;
    bool m_wasAtLibrary = false;
    bool m_looksAgain = false; ///< after the look that goes on
    int m_found = 0;
    int m_all = 0;
};
