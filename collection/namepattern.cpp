#include "collection/namepattern.h"

#include "base/text.h"
#include "collection/coretags.h"

namespace {
const QString& ignored()
{
    static const QString name = QStringLiteral("ignore");
    return name;
}

bool isNumber(const QString& field)
{
    return field == QLatin1String("year") || field == QLatin1String("track");
}
} // namespace

NamePattern::NamePattern(const QString& pattern, QString& wrong)
{
    wrong = parse(pattern);
    if (!wrong.isEmpty())
        m_fields.clear();
}

QString NamePattern::parse(const QString& pattern)
{
    QString expression;
    int literals = 0; // since the last field
    for (int at = 0; at < pattern.size(); ++at) {
        const QChar c = pattern.at(at);
        if (c == QLatin1Char('}'))
            return QStringLiteral("\"}\" closes nothing");
        if (c != QLatin1Char('{')) {
            m_folders += c == QLatin1Char('/') ? 1 : 0;
            expression += QRegularExpression::escape(c);
            ++literals;
            continue;
        }
        const int end = pattern.indexOf(QLatin1Char('}'), at);
        if (end < 0)
            return QStringLiteral("\"{\" is not closed by \"}\"");
        const QString name = pattern.mid(at + 1, end - at - 1);
        QString wrong = addField(name, m_fields.isEmpty() || literals > 0);
        if (!wrong.isEmpty())
            return wrong;
        expression += isNumber(m_fields.last()) ? QLatin1String("([0-9]+)") : QLatin1String("([^/]+?)");
        literals = 0;
        at = end;
    }
    if (m_fields.isEmpty())
        return QStringLiteral("it names no field, as {title} does");
    m_expression.setPattern(QRegularExpression::anchoredPattern(expression));
    return QString();
}

/// What is wrong with a field, which comes first or behind something else.
QString NamePattern::addField(const QString& name, bool isApart)
{
    if (name != ignored() && !TagFields::names().contains(name))
        return QStringLiteral("there is no field {%1}").arg(name);
    if (name != ignored() && m_fields.contains(name))
        return QStringLiteral("{%1} is there twice").arg(name);
    if (!isApart)
        return QStringLiteral("nothing stands between {%1} and the field before it").arg(name);
    m_fields.append(name);
    return QString();
}

QMap<QString, QString> NamePattern::read(const std::string& path) const
{
    if (isEmpty() || !base::isUtf8(path))
        return {};
    const QString whole = QString::fromStdString(path);
    const QString name = whole.section(QLatin1Char('/'), -1 - m_folders);
    if (name.count(QLatin1Char('/')) < m_folders)
        return {};
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const bool hasEnding = dot > name.lastIndexOf(QLatin1Char('/')) + 1;
    const QRegularExpressionMatch match = m_expression.match(hasEnding ? name.left(dot) : name);
    QMap<QString, QString> texts;
    for (int i = 0; match.hasMatch() && i < m_fields.size(); ++i) {
        const QString& field = m_fields.at(i);
        const QString text = match.captured(i + 1).trimmed();
        if (field != ignored())
            texts.insert(field, isNumber(field) ? QString::number(text.toInt()) : text);
    }
    return texts;
}
