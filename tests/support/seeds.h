#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// What fuzz targets start from: small files of every kind, and each input that once broke a promise.
namespace Seeds {
struct Seed
{
    QString group; ///< a target's seeds are run group by group: formats of music; empty for all others
    QString name;
    QByteArray bytes;
};

/// The targets that have seeds, by the name in front of "_fuzzer".
QStringList targets();
QList<Seed> of(const QString& target);

/// Music as it is read; an editing's seeds end with the choice of the edits.
QList<Seed> music();
/// Music that reading or editing once stumbled over.
QList<Seed> musicFindings();
} // namespace Seeds
