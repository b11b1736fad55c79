#pragma once

#include <QMetaMethod>
#include <QStringList>
#include <QtTest>

/// What a run takes of a test that is long: everything, or with "--part K N" as the first arguments every
/// N-th piece, from the K-th on. One that mostly waits is sooner over when its parts wait beside each other.
class Part
{
public:
    /// Takes its own out of the arguments.
    explicit Part(QStringList& arguments)
    {
        if (arguments.value(1) != QLatin1String("--part"))
            return;
        m_number = arguments.value(2).toInt();
        m_count = arguments.value(3).toInt();
        if (m_number < 1 || m_number > m_count)
            qFatal("there is no such part");
        arguments.erase(arguments.begin() + 1, arguments.begin() + 4);
    }
    bool isAll() const { return m_count == 1; }
    bool has(int piece) const { return piece % m_count == m_number - 1; }

private:
    int m_number = 1;
    int m_count = 1;
};

/// Runs a test, or those of its functions that belong to the part.
inline int runPart(QObject& test, QStringList arguments)
{
    const Part part(arguments);
    if (part.isAll())
        return QTest::qExec(&test, arguments);
    const QByteArrayList preparing = {"initTestCase", "cleanupTestCase", "init", "cleanup"};
    const QMetaObject& type = *test.metaObject();
    QStringList functions;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QByteArray name = type.method(i).name();
        if (type.method(i).access() == QMetaMethod::Private && !preparing.contains(name) &&
            !name.endsWith("_data"))
            functions.append(QString::fromLatin1(name));
    }
    for (int i = 0; i < functions.size(); ++i)
        if (part.has(i))
            arguments.append(functions.at(i));
    return QTest::qExec(&test, arguments);
}
