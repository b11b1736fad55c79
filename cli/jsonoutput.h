#pragma once

#include "cli/console.h"
#include "cli/json.h"
#include "cli/order.h"
#include "collection/songfile.h"

#include <string>
#include <vector>

/// Output for programs: one document, or a line for each song. The document's list is written as it comes.
class JsonOutput
{
public:
    JsonOutput(Order::Form form, Console& console) : m_form(form), m_console(console) {}

    /// `list` is what the document calls its list: of failures, when it is "failed".
    void begin(const char* command, const char* list);
    /// A member of the list; in a line its `type` says what it is.
    void item(const char* type, const Json& json);
    void failed(const std::string& path, const std::string& reason);
    /// With what the run counted.
    void end(const Json& counts, bool isInterrupted);

    static Json song(const SongFile& song);
    /// What a list for comparing keeps of a song.
    static Json shortSong(const SongFile& song);

private:
    const Order::Form m_form;
    Console& m_console;
    bool m_listsFailures = false;
    bool m_hasItems = false;
    std::vector<std::string> m_failed; ///< for the end of a document
};
