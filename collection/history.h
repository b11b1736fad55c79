#pragma once

#include "collection/changestep.h"
#include "collection/historysteps.h"
#include "collection/keptcovers.h"
#include "collection/stepreturn.h"
#include "collection/tagfiles.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

/// What was changed by calls of a program, step by step, for taking it back in later ones. It lies in a
/// folder of the user's own: a journal of the steps, and the covers that they took out of files. One thread
/// at a time.
class History
{
public:
    struct Limits
    {
        std::int64_t coverBytes = std::int64_t(256) * 1024 * 1024;  ///< the covers kept longest go first
        std::int64_t journalBytes = std::int64_t(64) * 1024 * 1024; ///< beyond it the oldest steps go
        std::chrono::milliseconds patience{10000};                  ///< with another run that changes files
    };

    /// Where the user's history lies; empty for a user without a home.
    static std::string usersFolder();
    /// Path in bytes as the system has it. Nothing is made before the first change.
    explicit History(const std::string& folder);
    History(const std::string& folder, const Limits& limits) : m_folder(folder), m_limits(limits) {}

    /// For changing files; `what` are the words that the history has for it. Null with the reason: then
    /// nothing could be taken back, and nothing is to be changed.
    std::unique_ptr<ChangeStep> begin(const std::string& what, QString& reason) const;

    /// All steps that changed anything, by their numbers; also while another run makes one. None, with the
    /// reason, where the history cannot be read.
    std::map<int, HistoryStep> steps(QString& reason) const;

    /// Takes back what is left of the step; without a number, of the newest one that this was not tried with.
    /// The last change first. A file that is not any more as the step left it stays as it is.
    StepReturn::Result takeBack(std::optional<int> step, TagFiles& tags,
                                const StepReturn::Progress& progress) const;

private:
    KeptCovers covers() const { return {m_folder + "/covers", m_limits.coverBytes}; }
    std::unique_ptr<HistoryJournal> open(QString& reason) const;

    std::string m_folder;
    Limits m_limits;
};
