#pragma once

#include "audiocore/saveproblem.h"
#include "itunes/editproblem.h"

#include <QVector>

#include <deque>

/// The changes of the library's tracks that can be taken back, the newest one first. What that needs is kept
/// by the library itself, until it is read anew; here are the steps. What the lists and views show of them is
/// the caller's. A step is forgotten once it was taken back, or could not be. One thread at a time; taking
/// back waits for the disk.
class TrackHistory
{
public:
    static constexpr int mostSteps = 100;

    struct TakenBack
    {
        enum class Kind { Nothing, Edit, Deletion };

        Kind kind = Kind::Nothing; ///< of the step; nothing where there was none
        QVector<quint64> tracks;   ///< of the step, by persistent identifier: all as they were, or none
        iTunesEditProblem problem = ITUNES_EDIT_DONE; ///< why they stay as they are
        SaveProblem media = SAVE_NO_PROBLEM;          ///< of the media file, when that is the problem
    };

    /// After an edit that was saved.
    void addEdit(quint64 track);
    /// After deletions that belong together. No step where there was none.
    void addDeletion(const QVector<quint64>& tracks);
    bool isEmpty() const { return m_steps.empty(); }
    int steps() const { return int(m_steps.size()); }
    /// Takes the newest step back, whole or not at all.
    TakenBack takeBack();
    void forget() { m_steps.clear(); }

private:
    struct Step
    {
        TakenBack::Kind kind;
        QVector<quint64> tracks;
    };

    void add(const Step& step);

    std::deque<Step> m_steps; ///< the newest last
};
