#pragma once

#include "collection/changestep.h"
#include "collection/cleaningplan.h"

#include <QPair>
#include <QString>
#include <QVector>

#include <functional>
#include <string>

/// Has tracks leave a music library as a plan says, and then their files go: many tracks at a stroke, and no
/// file whose track is not out. One thread at a time.
class TrackCleaning
{
public:
    /// The path of the library, in bytes as the system has it, and its state as the plan knows it; plan and
    /// step have to live as long.
    TrackCleaning(const CleaningPlan& plan, const std::string& library, const FileState& asRead,
                  ChangeStep& step)
        : m_plan(plan), m_library(library), m_asRead(asRead), m_step(step)
    {
    }

    struct Outcome
    {
        bool isOut = false;  ///< the track
        bool isGone = false; ///< the file
        QString whyNot;      ///< for what did not go though it was to
    };
    using Told = std::function<void(const CleaningPlan::Decision& decision, const Outcome& outcome)>;
    /// The reason why the library was not changed, and then no further track goes; empty when all is done, or
    /// `goOn`, asked before each stroke, answered false.
    QString carryOut(const CleaningPlan::Remove& remove, const Told& told, const std::function<bool()>& goOn);

private:
    struct Going
    {
        const CleaningPlan::Group* group;
        const CleaningPlan::Decision* decision;
    };

    QVector<Going> all() const;
    QString takeOut(const QVector<Going>& stroke, const CleaningPlan::Remove& remove, const Told& told);
    void removeFile(const Going& going, const CleaningPlan::Remove& remove, const Told& told) const;

    const CleaningPlan& m_plan;
    const std::string m_library;
    const FileState m_asRead;
    ChangeStep& m_step;
};
