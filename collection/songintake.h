#pragma once

#include "collection/folderwalk.h"
#include "collection/songfile.h"
#include "collection/songreading.h"

#include <string>

/// Takes songs in without a window: walks folders and reads the files, several at once, and tells of them in
/// a fixed order. One thread at a time.
class SongIntake final : private FolderWalk::Visitor
{
public:
    enum class LeftOut {
        NotWritable, ///< FolderWalk::Rules::unwritable would take it
        NotMusic     ///< by its name; of what was named alone
    };
    /// Who gets the songs. All calls come on the thread of the intake.
    class Receiver
    {
    public:
        virtual ~Receiver() = default;
        virtual void song(const SongFile& song) = 0;
        /// A file or folder that cannot be read.
        virtual void failed(const std::string& path, const std::string& reason) = 0;
        virtual void leftOut(const std::string& path, LeftOut why) = 0;
        /// False ends the intake.
        virtual bool goesOn() = 0;

    protected:
        Receiver() = default;
        Receiver(const Receiver&) = default;
        Receiver& operator=(const Receiver&) = default;
    };

    SongIntake(FolderWalk::Rules rules, Receiver& receiver);

    /// A folder, or a file whose name counts as one of music.
    void add(const std::string& path);
    /// A file, whatever its name.
    void addFile(const std::string& path) { m_reading.add(path); }
    /// Tells of all that was added.
    void finish() { m_reading.finish(); }

private:
    void found(const std::string& path) override { addFile(path); }
    void failed(const std::string& path, const std::string& reason) override;
    void leftOut(const std::string& path) override;
    bool goesOn() override { return m_receiver.goesOn(); }
    void tell(const SongFile& song);

    Receiver& m_receiver;
    FolderWalk m_walk;
    SongReading m_reading;
};
