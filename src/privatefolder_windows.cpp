#include "privatefolder.h"

#include <QTemporaryDir>

// What a killed run left stays: there is no lock here that would tell it.
class PrivateFolder::Data
{
public:
    explicit Data(const QString& parent) : folder(parent + QLatin1String("/melodrift-XXXXXX")) {}

    QTemporaryDir folder;
};

PrivateFolder::PrivateFolder(const QString& parent) : m_data(std::make_unique<Data>(parent))
{
    if (!m_data->folder.isValid())
        qWarning("no private temporary folder: %s", qUtf8Printable(m_data->folder.errorString()));
}

PrivateFolder::~PrivateFolder() = default;

QString PrivateFolder::path() const
{
    return m_data->folder.isValid() ? m_data->folder.path() : QString();
}
