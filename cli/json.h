#pragma once

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

/// An object of JSON, its members in the order in which they come.
class Json
{
public:
    Json& text(const char* name, const QString& value);
    Json& text(const char* name, const std::string& utf8);
    Json& number(const char* name, std::uint64_t value);
    Json& flag(const char* name, bool value);
    /// Any value that is JSON already.
    Json& value(const char* name, const std::string& json);
    /// Those of another object.
    Json& members(const Json& other);
    /// The bytes of a path; what is no UTF-8 is U+FFFD in it, and a member NAME_base64 has all its bytes.
    Json& path(const char* name, const std::string& bytes);

    std::string object() const { return '{' + m_members + '}'; }

    static std::string quoted(const std::string& utf8);
    static std::string list(const std::vector<std::string>& values);

private:
    std::string m_members;
};
