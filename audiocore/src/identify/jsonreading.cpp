#include "identify/jsonreading.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace json = audiocore::json;

namespace {
constexpr int deepest = 32;
constexpr int mostValues = 500000;
constexpr std::size_t longestText = 4096;

struct TooMuch
{
};

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}
} // namespace

std::optional<json::Value> json::parse(const std::string& text)
{
    int values = 0;
    const auto bound = [&values](int depth, Value::parse_event_t, Value&) {
        if (depth > deepest || ++values > mostValues)
            throw TooMuch();
        return true;
    };
    try {
        Value value = Value::parse(text, bound, false);
        if (value.is_discarded())
            return std::nullopt;
        return value;
    } catch (const TooMuch&) {
        return std::nullopt;
    }
}

const json::Value& json::member(const Value& object, const char* name)
{
    static const Value none;
    if (!object.is_object())
        return none;
    const auto found = object.find(name);
    return found == object.end() ? none : *found;
}

const std::vector<json::Value>& json::elements(const Value& array)
{
    static const std::vector<Value> none;
    return array.is_array() ? array.get_ref<const std::vector<Value>&>() : none;
}

std::string json::cleaned(std::string text)
{
    if (text.size() > longestText)
        return std::string();
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    text.erase(0, text.find_first_not_of(' '));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string json::text(const Value& object, const char* name)
{
    const Value& value = member(object, name);
    return value.is_string() ? cleaned(value.get_ref<const std::string&>()) : std::string();
}

std::optional<double> json::number(const Value& object, const char* name)
{
    const Value& value = member(object, name);
    if (!value.is_number() || !std::isfinite(value.get<double>()))
        return std::nullopt;
    return value.get<double>();
}

std::string json::identifier(const Value& object, const char* name)
{
    constexpr std::size_t length = 36;
    const std::string result = text(object, name);
    if (result.size() != length)
        return std::string();
    for (std::size_t i = 0; i < length; ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? result[i] != '-' : !std::isxdigit(static_cast<unsigned char>(result[i])))
            return std::string();
    }
    return result;
}
