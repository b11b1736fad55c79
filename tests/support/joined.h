#pragma once

#include <QFileInfo>

#include <initializer_list>

// A test's class stands in one source, whatever that is included by.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wsubobject-linkage"
#endif

struct JoinedTest
{
    const char* name;
    int (*run)(int argc, char** argv);
};

/// Runs the test that the program is called by the name of. Gives what that gives, or 2 where there is none.
inline int runJoined(std::initializer_list<JoinedTest> tests, int argc, char** argv)
{
    const QString name = QFileInfo(QString::fromLocal8Bit(argv[0])).baseName();
    for (const JoinedTest& test : tests)
        if (name == QLatin1String(test.name))
            return test.run(argc, argv);
    qWarning("%s: no test is called so", argv[0]);
    return 2;
}
