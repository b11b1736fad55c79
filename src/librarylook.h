#pragma once

#include "songs/librarysight.h"

#include <QObject>

#include <memory>

/// Looks for the music library on a thread: a disk or a network share that does not answer holds up nobody,
/// not even the end of the program. GUI thread only.
class LibraryLook : public QObject
{
    Q_OBJECT

public:
    LibraryLook();
    ~LibraryLook() override;

    /// Looks anew; of what an earlier call still looks for nothing is told.
    void begin();
    bool isRunning() const;

signals:
    void ended(const LibrarySight& sight);

private:
    struct Answer;

    /// What was found, when it is not of an earlier look. Called by name: what is posted so is Qt's own, and
    /// the answer's lock is all that guards what threads share.
    Q_INVOKABLE void take();

    std::shared_ptr<Answer> m_awaited; ///< null while nothing is looked for
};
