#pragma once

#include <QString>

#include <memory>

/// A folder for the temporary files of this run that nobody but its user can enter. It is locked as long as
/// its process lives; by that, programs that start tell what a killed run left behind from what is in use.
class PrivateFolder
{
public:
    /// Makes one in the folder `parent`, and removes, in the background, what killed runs of this user left
    /// there. A failure is logged.
    explicit PrivateFolder(const QString& parent);
    /// Removes the folder and all that is in it, links themselves and not what they lead to.
    ~PrivateFolder();
    Q_DISABLE_COPY(PrivateFolder)

    /// Absolute; empty when the folder could not be made.
    QString path() const;

private:
    class Data;

    std::unique_ptr<Data> m_data;
};
