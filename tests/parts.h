#pragma once

#include <QMetaMethod>
#include <QStringList>
#include <QtTest>

/// Runs a test, or with "--part K N" as the first arguments every N-th function of it, from the K-th on: one
/// that mostly waits is sooner over when its parts wait beside each other.
inline int runPart(QObject& test, QStringList arguments)
{
    if (arguments.value(1) != QLatin1String("--part"))
        return QTest::qExec(&test, arguments);
    const int part = arguments.value(2).toInt();
    const int parts = arguments.value(3).toInt();
    if (part < 1 || part > parts)
        qFatal("there is no such part");
    const QByteArrayList preparing = {"initTestCase", "cleanupTestCase", "init", "cleanup"};
    const QMetaObject& type = *test.metaObject();
    QStringList functions;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QByteArray name = type.method(i).name();
        if (type.method(i).access() == QMetaMethod::Private && !preparing.contains(name) &&
            !name.endsWith("_data"))
            functions.append(QString::fromLatin1(name));
    }
    arguments.erase(arguments.begin() + 1, arguments.begin() + 4);
    for (int i = part - 1; i < functions.size(); i += parts)
        arguments.append(functions.at(i));
    return QTest::qExec(&test, arguments);
}
