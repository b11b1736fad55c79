#pragma once

#include "base/trash.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <filesystem>
#include <memory>
#include <system_error>

#include <sys/stat.h>

/// A folder of files beside a user's trash of its own, on one disk.
class TrashFixture : public QObject
{
protected:
    ~TrashFixture() override { removeFiles(); }

    void prepare()
    {
        removeFiles();
        m_folder = std::make_unique<QTemporaryDir>();
        m_files = QFile::encodeName(QFileInfo(m_folder->path()).canonicalFilePath()) + "/music/";
        QVERIFY(QDir().mkpath(QFile::decodeName(m_files)));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder->path()) + "/data");
        m_trash = QFile::encodeName(m_folder->path()) + "/data/Trash";
        m_error.clear();
    }

    /// Whatever they are called.
    void removeFiles() const
    {
        std::error_code failure;
        if (m_folder)
            std::filesystem::remove_all(m_files.toStdString(), failure);
        if (m_folder)
            std::filesystem::remove_all(m_trash.toStdString(), failure);
    }

    std::string at(const QByteArray& name) const { return (m_files + name).toStdString(); }
    /// Names of any bytes.
    std::string write(const QByteArray& name, const QByteArray& bytes) const
    {
        std::FILE* const file = std::fopen(at(name).c_str(), "wb");
        if (!file ||
            std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), file) != std::size_t(bytes.size()))
            qFatal("cannot write %s", at(name).c_str());
        std::fclose(file);
        return at(name);
    }
    static QByteArray read(const std::string& path)
    {
        QByteArray bytes(1000, 0);
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        if (!file)
            return "nothing";
        bytes.resize(int(std::fread(bytes.data(), 1, std::size_t(bytes.size()), file)));
        std::fclose(file);
        return bytes;
    }
    static base::FileState stateOf(const std::string& path)
    {
        struct stat status = {};
        base::FileState state;
        if (::lstat(path.c_str(), &status) != 0 || !base::stateOf(path, state))
            return base::FileState();
        return state;
    }
    /// Names of any bytes, too.
    static QStringList namesIn(const QByteArray& folder)
    {
        QStringList names;
        std::error_code failure;
        for (const auto& entry : std::filesystem::directory_iterator(folder.toStdString(), failure))
            names.append(QString::fromStdString(entry.path().filename().string()));
        names.sort();
        return names;
    }
    QStringList trashed() const { return namesIn(m_trash + "/files"); }
    QStringList notes() const { return namesIn(m_trash + "/info"); }

    static std::string inTrash(const base::TrashedFile& file) { return file.trash + "/files/" + file.name; }
    static std::string noteOf(const base::TrashedFile& file)
    {
        return file.trash + "/info/" + file.name + ".trashinfo";
    }
    /// What the note says of the path, its numbers as bytes again.
    static QByteArray pathInNote(const base::TrashedFile& file)
    {
        const QList<QByteArray> lines = read(noteOf(file)).split('\n');
        return lines.size() > 1 && lines[1].startsWith("Path=")
                   ? QByteArray::fromPercentEncoding(lines[1].mid(5))
                   : QByteArray("no path");
    }

    base::Trash::Taking take(const std::string& path, base::TrashedFile& taken)
    {
        return m_bin->take(path, stateOf(path), taken, m_error);
    }
    void begin() { m_bin = std::make_unique<base::Trash>(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_files; ///< the folder of files, with the slash
    QByteArray m_trash;
    std::unique_ptr<base::Trash> m_bin;
    std::string m_error;
};
