#include "cli/json.h"

#include "base/text.h"

#include <cstdio>

std::string Json::quoted(const std::string& utf8)
{
    std::string json(1, '"');
    for (const char c : utf8) {
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", unsigned(c));
            json += escaped;
        } else {
            json += c;
        }
    }
    return json + '"';
}

std::string Json::list(const std::vector<std::string>& values)
{
    std::string json(1, '[');
    for (const std::string& value : values) {
        if (json.size() > 1)
            json += ',';
        json += value;
    }
    return json + ']';
}

Json& Json::members(const Json& other)
{
    if (!m_members.empty() && !other.m_members.empty())
        m_members += ',';
    m_members += other.m_members;
    return *this;
}

Json& Json::value(const char* name, const std::string& json)
{
    if (!m_members.empty())
        m_members += ',';
    m_members += quoted(name) + ':' + json;
    return *this;
}

Json& Json::text(const char* name, const QString& value)
{
    return text(name, value.toStdString());
}

Json& Json::text(const char* name, const std::string& utf8)
{
    return value(name, quoted(utf8));
}

Json& Json::number(const char* name, std::uint64_t number)
{
    return value(name, std::to_string(number));
}

Json& Json::flag(const char* name, bool flag)
{
    return value(name, flag ? "true" : "false");
}

Json& Json::path(const char* name, const std::string& bytes)
{
    if (base::isUtf8(bytes))
        return text(name, bytes);
    text(name, base::shownName(bytes));
    const QByteArray all = QByteArray::fromStdString(bytes).toBase64();
    return text((std::string(name) + "_base64").c_str(), all.toStdString());
}
