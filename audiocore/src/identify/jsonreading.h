#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Reading of JSON that nobody vouches for: what is absent or of another type reads as nothing.
namespace audiocore::json {
using Value = nlohmann::json;

/// What was parsed. Its end takes no memory: that of a whole value does, and ends the program where there is
/// none.
class Document
{
public:
    explicit Document(Value value) : m_value(std::move(value)) {}
    Document(Document&&) = default;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    const Value& value() const { return m_value; }

private:
    Value m_value;
};

/// Nothing for what is no JSON, or nested deeper or made of more values than any real answer.
std::optional<Document> parse(const std::string& text);

/// The member of that name; null when there is none.
const Value& member(const Value& object, const char* name);
/// The elements of an array; none when it is none.
const std::vector<Value>& elements(const Value& array);
/// A text member, clean.
std::string text(const Value& object, const char* name);
/// A finite number member.
std::optional<double> number(const Value& object, const char* name);
/// A member that names an entry of the database by its 36-character identifier; empty for anything else.
std::string identifier(const Value& object, const char* name);
} // namespace audiocore::json
