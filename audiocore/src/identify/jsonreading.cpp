#include "identify/jsonreading.h"

#include "identify/cleantext.h"

#include <cctype>
#include <cmath>

namespace json = audiocore::json;

namespace {
constexpr int deepest = 32;
constexpr int mostValues = 500000;

struct TooMuch
{
};

/// From the leaves on: what holds nothing ends without memory. As deep as parse() lets a value be.
void clear(json::Value& value) noexcept
{
    if (auto* const elements = value.get_ptr<json::Value::array_t*>()) {
        for (json::Value& element : *elements)
            clear(element);
        elements->clear();
    }
    if (auto* const members = value.get_ptr<json::Value::object_t*>()) {
        for (auto& member : *members)
            clear(member.second);
        members->clear();
    }
}
} // namespace

json::Document::~Document()
{
    clear(m_value);
}

std::optional<json::Document> json::parse(const std::string& text)
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
        return Document(std::move(value));
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

std::string json::text(const Value& object, const char* name)
{
    const Value& value = member(object, name);
    return value.is_string() ? cleanText(value.get_ref<const std::string&>()) : std::string();
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
    std::string result = text(object, name);
    if (result.size() != length)
        return std::string();
    for (std::size_t i = 0; i < length; ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? result[i] != '-' : !std::isxdigit(static_cast<unsigned char>(result[i])))
            return std::string();
    }
    return result;
}
