#pragma once

#include <string>
#include <vector>

/// A pattern that names are compared with: `*` stands for any characters but "/", `**` for any, `?` for one,
/// `[a-z]` for one of a set, `[!a-z]` for one that is not in it; a backslash takes its meaning from the next
/// one. Without a "/" it is compared with the name of a file or folder, with one with its whole path below
/// the folder that is walked. Bytes of a name that are no UTF-8 are a character each. Any thread.
class Glob
{
public:
    /// `wrong` says what makes no sense about the pattern; it is empty for one that does.
    Glob(const std::string& pattern, std::string& wrong);

    /// Of a path that begins below the folder that is walked.
    bool matches(const std::string& path) const;

private:
    struct Part
    {
        enum class Kind { Character, One, OneOf, NoneOf, Any, AnyPath };
        Kind kind;
        char32_t character = 0;
        std::vector<std::pair<char32_t, char32_t>> ranges; ///< of a set, ends included

        bool takes(char32_t c) const;
        bool repeats() const { return kind == Kind::Any || kind == Kind::AnyPath; }
    };

    std::string parse(const std::u32string& pattern);
    static std::string parseSet(const std::u32string& pattern, std::size_t& at, Part& set);
    void follow(std::vector<char>& places) const;

    std::vector<Part> m_parts;
    bool m_wholePath = false;
};
