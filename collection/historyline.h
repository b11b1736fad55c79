#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One line of a history, whatever it is about: a word for what it is, and then numbers and texts of any
/// bytes. It says of itself whether it is whole.
class HistoryLine
{
public:
    explicit HistoryLine(const std::string& what) : m_content(what) {}
    HistoryLine& number(std::int64_t number);
    HistoryLine& text(const std::string& text);
    /// With the line feed.
    std::string whole() const;

    /// Takes apart what whole() made; one way, from the first to the last.
    class Reader
    {
    public:
        /// A line without its line feed, which has to live as long.
        explicit Reader(std::string_view line);

        /// Whether it was a whole line, and everything asked for so far was there.
        bool isGood() const { return m_good; }
        bool isAtEnd() const { return m_rest.empty(); }
        std::string_view what() const { return m_what; }
        std::int64_t number();
        std::string text();

    private:
        std::string_view next();

        std::string_view m_what;
        std::string_view m_rest;
        bool m_good = false;
    };

private:
    std::string m_content;
};
