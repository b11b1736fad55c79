#include "xml/xmlscanner.h"

#include "xml/xmlgrammar.h"

#include <algorithm>
#include <cstring>

using itunes::XmlScanner;
using Event = itunes::XmlScanner::Event;

namespace {
constexpr std::size_t firstBuffer = 256 * 1024; // at most
constexpr std::size_t largestBuffer = 4 * 1024 * 1024;
constexpr std::size_t largestDocumentType = 1024 * 1024;
constexpr std::size_t deepest = 1000;
constexpr std::size_t longestName = 256;
/// Zeros behind the buffer's end, so that a few bytes ahead may be looked at without counting.
constexpr std::size_t padding = 16;

/// The index of the next "<", or the end.
std::size_t findMarkup(const char* bytes, std::size_t at, std::size_t end)
{
    // Half of the tags follow the one before directly.
    if (at < end && bytes[at] == '<')
        return at;
    const void* const found = std::memchr(bytes + at, '<', end - at);
    return found ? std::size_t(static_cast<const char*>(found) - bytes) : end;
}
} // namespace

XmlScanner::XmlScanner(ByteSource& source)
    : m_source(source), m_buffer(source.roomForAll(firstBuffer) + padding)
{
}

Event XmlScanner::next()
{
    if (m_selfClosing) {
        m_selfClosing = false;
        m_textAt = m_tagAt = m_at;
        m_pieces.clear();
        pop();
        return Event::Close;
    }
    m_textAt = m_at;
    m_pieces.clear();
    m_textLost = false;
    for (;;) {
        if (!seekMarkup())
            return atEnd();
        m_tagAt = m_at;
        if (m_openAt.empty() && !blankOutside())
            return fail("text outside the document");
        const char kind = m_buffer[m_at + 1];
        if (kind == '/')
            return closeTag();
        if (kind != '!' && kind != '?')
            return openTag();
        if (!passMarkup())
            return Event::Broken;
    }
}

/// Reads on; what lies before the text at hand is given up, and the text too when it gets too long. False at
/// the source's end, and when what begins at m_at fills the buffer.
bool XmlScanner::more()
{
    if (m_atEnd)
        return false;
    dropBefore(m_textAt);
    if (room() < ByteSource::leastRoom && !grow()) {
        m_textLost = true;
        dropBefore(m_at);
        if (room() < ByteSource::leastRoom)
            return false;
    }
    const std::size_t got = m_source.read(m_buffer.data() + m_end, room());
    m_end += got;
    std::memset(m_buffer.data() + m_end, 0, padding);
    m_atEnd = got == 0;
    return got > 0;
}

void XmlScanner::dropBefore(std::size_t index)
{
    if (index == 0)
        return;
    std::memmove(m_buffer.data(), m_buffer.data() + index, m_end - index);
    m_base += index;
    m_at -= index;
    m_end -= index;
    m_tagAt -= std::min(m_tagAt, index);
    m_textAt = 0;
}

bool XmlScanner::grow()
{
    if (m_buffer.size() >= largestBuffer)
        return false;
    m_buffer.resize((m_buffer.size() - padding) * 2 + padding);
    return true;
}

std::size_t XmlScanner::room() const
{
    return m_buffer.size() - padding - m_end;
}

/// Whether so many bytes follow at m_at.
bool XmlScanner::available(std::size_t count)
{
    while (m_end - m_at < count)
        if (!more())
            return false;
    return true;
}

/// Goes to the next "<" that has enough behind it to tell what it begins; false at the end.
bool XmlScanner::seekMarkup()
{
    for (;;) {
        m_at = findMarkup(m_buffer.data(), m_at, m_end);
        if (m_at < m_end) {
            if (m_end - m_at < padding)
                (void)available(padding);
            return true;
        }
        if (!more())
            return false;
    }
}

bool XmlScanner::blankOutside() const
{
    // A byte-order mark is no text; control characters are dropped everywhere.
    const bool mark = m_base + m_textAt == 0 && std::memcmp(m_buffer.data(), "\xEF\xBB\xBF", 3) == 0;
    return !m_textLost && m_pieces.empty() &&
           std::all_of(m_buffer.begin() + std::ptrdiff_t(m_textAt + (mark ? 3 : 0)),
                       m_buffer.begin() + std::ptrdiff_t(m_at),
                       [](char c) { return static_cast<unsigned char>(c) <= ' '; });
}

/// Adds a part of the text that does not reach up to the next tag.
void XmlScanner::keepPiece(bool literal, std::size_t begin, std::size_t end)
{
    if (m_openAt.empty())
        return;
    const std::string_view raw(m_buffer.data() + begin, end - begin);
    if (m_pieces.size() + raw.size() > largestBuffer)
        m_textLost = true;
    else if (literal)
        appendLiteral(raw, m_pieces);
    else
        appendText(raw, m_entities, m_pieces);
}

/// Goes behind the terminator; nothing on the way is kept.
bool XmlScanner::skipTo(std::string_view terminator)
{
    for (;;) {
        const std::size_t found = ahead().find(terminator);
        if (found != std::string_view::npos) {
            m_at += found + terminator.size();
            m_textAt = m_at;
            return true;
        }
        m_at = std::max(m_at, m_end - std::min(m_end, terminator.size() - 1));
        m_textAt = m_at;
        if (!more())
            return false;
    }
}

/// Passes over what is no tag; false when it does not end.
bool XmlScanner::passMarkup()
{
    if (ahead().substr(0, 9) == "<![CDATA[")
        return passSection();
    if (ahead().substr(0, 9) == "<!DOCTYPE")
        return passDocumentType();
    const bool comment = ahead().substr(0, 4) == "<!--";
    if (!comment && ahead()[1] == '!')
        return fail("a declaration where none belongs") != Event::Broken;
    const std::uint64_t begin = m_base + m_at;
    keepPiece(false, m_textAt, m_at);
    m_at += comment ? 4 : 2;
    if (skipTo(comment ? "-->" : "?>"))
        return true;
    fail(comment ? "a comment that does not end" : "an instruction that does not end");
    m_errorOffset = begin;
    return false;
}

bool XmlScanner::passSection()
{
    if (m_openAt.empty())
        return fail("text outside the document") != Event::Broken;
    keepPiece(false, m_textAt, m_at);
    const std::uint64_t begin = m_base + m_at;
    m_at += 9;
    m_textAt = m_at;
    for (;;) {
        const std::size_t end = ahead().find("]]>");
        if (end != std::string_view::npos) {
            keepPiece(true, m_textAt, m_at + end);
            m_at = m_textAt = m_at + end + 3;
            return true;
        }
        m_at = std::max(m_at, m_end - std::min<std::size_t>(m_end, 2));
        if (more())
            continue;
        fail("a section that does not end");
        m_errorOffset = begin;
        return false;
    }
}

bool XmlScanner::passDocumentType()
{
    if (m_rootSeen || m_typeSeen)
        return fail("a document type where none belongs") != Event::Broken;
    m_typeSeen = true;
    m_textAt = m_at;
    std::size_t size = xml::documentTypeSize(ahead());
    while (size == 0 && ahead().size() < largestDocumentType && more())
        size = xml::documentTypeSize(ahead());
    if (size == 0)
        return fail("a document type that does not end") != Event::Broken;
    if (!m_entities.declare(ahead().substr(0, size)))
        return fail("entities made of entities, or too long") != Event::Broken;
    m_at = m_textAt = m_at + size;
    return true;
}

Event XmlScanner::atEnd()
{
    m_tagAt = m_at;
    if (m_openAt.empty() && !blankOutside())
        return fail("text outside the document");
    if (!m_openAt.empty())
        return fail("the file ends inside <" + std::string(innermost()) + ">");
    return m_rootSeen ? Event::End : fail("there is no document");
}

/// The index of the ">" of the tag at m_at; 0 when there is none.
std::size_t XmlScanner::openTagEnd()
{
    do {
        const std::size_t end = xml::openTagEnd(ahead());
        if (end > 0)
            return m_at + end;
    } while (more());
    return 0;
}

Event XmlScanner::openTag()
{
    if (m_openAt.empty() && m_rootSeen)
        return fail("a second document");
    std::size_t nameEnd = m_at + 1;
    while (xml::isNameByte(m_buffer[nameEnd]))
        ++nameEnd;
    std::size_t end = nameEnd;
    if (m_buffer[end] != '>') {
        end = openTagEnd();
        if (end == 0)
            return fail("a tag that does not end");
        m_tagAt = m_at;
        nameEnd = m_at + 1;
        while (xml::isNameByte(m_buffer[nameEnd]))
            ++nameEnd;
        m_selfClosing = m_buffer[end - 1] == '/';
        if (!xml::areAttributes({m_buffer.data() + nameEnd, end - nameEnd - (m_selfClosing ? 1 : 0)}))
            return fail("a malformed tag");
    }
    if (nameEnd == m_at + 1 || !xml::startsName(m_buffer[m_at + 1]))
        return fail("a malformed tag");
    if (nameEnd - m_at - 1 > longestName)
        return fail("an element of too long a name");
    if (m_openAt.size() >= deepest)
        return fail("elements nested too deeply");
    m_name = {m_buffer.data() + m_at + 1, nameEnd - m_at - 1};
    push(m_name);
    m_rootSeen = true;
    m_at = end + 1;
    return Event::Open;
}

Event XmlScanner::closeTag()
{
    const std::string_view expected = innermost();
    // Room for the name and the ">"; blanks before it are rare.
    (void)available(expected.size() + 3);
    m_tagAt = m_at;
    if (m_openAt.empty() || ahead().substr(2, expected.size()) != expected)
        return fail(m_openAt.empty() ? "a closing tag too many"
                                     : "a closing tag that does not match <" + std::string(expected) + ">");
    std::size_t end = m_at + 2 + expected.size();
    while (xml::isBlank(m_buffer[end]) || end >= m_end) {
        if (end < m_end) {
            ++end;
            continue;
        }
        const std::size_t length = end - m_at;
        if (!more())
            return fail("a tag that does not end");
        m_tagAt = m_at;
        end = m_at + length;
    }
    if (m_buffer[end] != '>')
        return fail("a closing tag that does not match <" + std::string(expected) + ">");
    m_name = {m_buffer.data() + m_at + 2, expected.size()};
    pop();
    m_at = end + 1;
    return Event::Close;
}

std::string_view XmlScanner::text()
{
    if (m_textLost)
        return {};
    const std::string_view raw(m_buffer.data() + m_textAt, m_tagAt - m_textAt);
    if (m_pieces.empty() && isPlain(raw))
        return raw;
    m_scratch = m_pieces;
    appendText(raw, m_entities, m_scratch);
    return m_scratch;
}

std::uint64_t XmlScanner::leadBegin() const
{
    return tagBegin() - lead().size();
}

std::string_view XmlScanner::lead() const
{
    std::size_t begin = m_tagAt;
    while (begin > m_textAt && xml::isBlank(m_buffer[begin - 1]))
        --begin;
    return {m_buffer.data() + begin, m_tagAt - begin};
}

Event XmlScanner::fail(const std::string& reason)
{
    m_error = reason;
    m_errorOffset = m_base + m_tagAt;
    return Event::Broken;
}

void XmlScanner::push(std::string_view name)
{
    m_openAt.push_back(m_open.size());
    m_open += name;
}

void XmlScanner::pop()
{
    m_open.resize(m_openAt.back());
    m_openAt.pop_back();
}

std::string_view XmlScanner::innermost() const
{
    return m_openAt.empty() ? std::string_view() : std::string_view(m_open).substr(m_openAt.back());
}
