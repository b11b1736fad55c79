#pragma once

#include "collection/history.h"
#include "filebytes.h"
#include "owntrash.h"
#include "plaintags.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// Files with tags, a trash, and a history of what is changed about them.
class HistoryFixture : public QObject
{
protected:
    void prepare()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_bin.empty();
        QVERIFY(QDir(m_folder->path()).mkpath("music"));
        m_reason.clear();
    }

    std::string at(const QString& name) const
    {
        return QFile::encodeName(QFileInfo(m_folder->path()).canonicalFilePath() + "/music/" + name)
            .toStdString();
    }
    std::string stateFolder() const
    {
        return QFile::encodeName(m_folder->filePath("state/melodrift")).toStdString();
    }
    QString journalPath() const { return m_folder->filePath("state/melodrift/journal"); }
    History history() const { return History(stateFolder(), m_limits); }

    std::string write(const QString& name, const QByteArray& bytes) const
    {
        Fixtures::saveBytes(bytes, QFile::decodeName(at(name).c_str()));
        return at(name);
    }
    std::string song(const QString& name, const QString& title, const QByteArray& picture = {}) const
    {
        TagTexts held;
        held.texts.insert("title", title);
        held.picture = picture;
        return write(name, PlainTags::bytesOf(held));
    }
    static QByteArray read(const std::string& path)
    {
        return Fixtures::readBytes(QFile::decodeName(path.c_str()));
    }
    QString titleOf(const std::string& path)
    {
        TagTexts held;
        m_tags.read(path, held);
        return held.texts.value("title");
    }

    static TagTexts title(const QString& text)
    {
        TagTexts change;
        change.texts.insert("title", text);
        return change;
    }
    static TagTexts picture(const QByteArray& bytes)
    {
        TagTexts change;
        change.picture = bytes;
        return change;
    }

    /// A step that moves the files into the trash; the reasons of those that stay.
    QStringList trash(const std::vector<std::string>& paths) const
    {
        QString reason;
        const std::unique_ptr<ChangeStep> step = history().begin("clean", reason);
        QStringList reasons;
        if (!step)
            return {reason};
        for (const std::string& path : paths)
            reasons += step->moveToTrash(path, FileState::ofEntry(path));
        reasons.removeAll(QString());
        return reasons;
    }
    /// A step that edits one file; the reason why not.
    QString edit(const std::string& path, const TagTexts& change)
    {
        QString reason;
        const std::unique_ptr<ChangeStep> step = history().begin("tag", reason);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        return step ? step->edit(path, change, m_tags, edited) : reason;
    }
    StepReturn::Result takeBack(std::optional<int> step = std::nullopt)
    {
        return history().takeBack(step, m_tags, [](int, int) { return true; });
    }
    std::map<int, HistoryStep> steps()
    {
        m_reason.clear();
        return history().steps(m_reason);
    }

    const OwnTrash m_bin;
    std::unique_ptr<QTemporaryDir> m_folder;
    History::Limits m_limits;
    PlainTags m_tags;
    QString m_reason;
};

/// One line for each file: its name, and why it stays.
inline QStringList failuresOf(const StepReturn::Result& result)
{
    QStringList failures;
    for (const StepReturn::Told& told : result.failed)
        failures.append(QString::fromStdString(told.path).section('/', -1) + ": " + told.reason);
    return failures;
}
