#pragma once

#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "programrun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// A folder with songs, and runs of melodrift-cli in it.
class CliRun
{
public:
    struct Answer
    {
        int code; ///< -1 for a program that did not end by itself
        QByteArray output;
        QByteArray errors;

        QJsonObject document() const { return QJsonDocument::fromJson(output).object(); }
        QList<QJsonObject> lines() const
        {
            QList<QJsonObject> objects;
            for (const QByteArray& line : output.split('\n'))
                if (!line.isEmpty())
                    objects.append(QJsonDocument::fromJson(line).object());
            return objects;
        }
    };

    CliRun() { QDir(m_files.path()).mkdir(QStringLiteral("home")); }

    QString path(const QString& name = QString()) const { return m_files.filePath(name); }

    Answer ask(const QStringList& arguments, const QByteArray& input = QByteArray()) const
    {
        ProgramRun run;
        prepare(run);
        run.start(program(), arguments);
        run.process.write(input);
        run.process.closeWriteChannel();
        if (!run.process.waitForFinished(patience) || run.process.exitStatus() != QProcess::NormalExit)
            return {-1, run.process.readAllStandardOutput(), run.process.readAllStandardError()};
        return {run.process.exitCode(), run.process.readAllStandardOutput(),
                run.process.readAllStandardError()};
    }
    /// Has the run work in the folder, with a home that all runs share, and what lies there.
    void prepare(ProgramRun& run) const
    {
        run.process.setWorkingDirectory(m_files.path());
        run.set(QStringLiteral("HOME"), path(QStringLiteral("home")));
        run.unset(QStringLiteral("XDG_STATE_HOME"));
        run.unset(QStringLiteral("XDG_CACHE_HOME"));
    }
    /// The built program, which lies beside the tests.
    static QString program()
    {
        return QStandardPaths::findExecutable(QStringLiteral("melodrift-cli"),
                                              {QCoreApplication::applicationDirPath()});
    }

    /// A song of the kind and these texts, with folders as its name has them.
    QString addSong(const QString& name, const QHash<int, QString>& texts,
                    const QString& kind = QStringLiteral("mp3"), const QByteArray& cover = QByteArray()) const
    {
        const QFileInfo place(path(name));
        QDir().mkpath(place.path());
        const QString file = Fixtures::copyTone(kind, place.path(), place.completeBaseName());
        if (AudioFile::write(file, texts, &cover) != 0)
            qFatal("cannot tag %s", qPrintable(file));
        return file;
    }
    void addFile(const QByteArray& name, const QByteArray& content) const
    {
        QDir().mkpath(QFileInfo(path(QString::fromUtf8(name))).path());
        const QByteArray file = m_files.path().toUtf8() + '/' + name;
        FILE* const stream = std::fopen(file.constData(), "wb");
        if (!stream || std::fwrite(content.constData(), 1, std::size_t(content.size()), stream) !=
                           size_t(content.size()))
            qFatal("cannot make %s", file.constData());
        std::fclose(stream);
    }
    static QHash<int, QString> texts(const QString& title, const QString& artist = QStringLiteral("Zoé"))
    {
        return {{TAG_TITLE, title},
                {TAG_ARTIST, artist},
                {TAG_ALBUM, QStringLiteral("First")},
                {TAG_GENRE, QStringLiteral("Pop")},
                {TAG_YEAR, QStringLiteral("2004")},
                {TAG_TRACK, QStringLiteral("3")}};
    }

private:
    QTemporaryDir m_files;
};
