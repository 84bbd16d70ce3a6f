#pragma once

#include <utility>

#include <QString>
#include <QStringList>

namespace tirn {

/// The command line says something that cannot be; ends with exit code 2.
struct UsageError
{
    QString text;
};

/// A file could not be read, understood or written; ends with exit code 1.
struct FileError
{
    FileError(QString name, QStringList reasons) : file(std::move(name)), texts(std::move(reasons)) {}
    FileError(QString name, const QString& reason) : FileError(std::move(name), QStringList{reason}) {}

    QString file;
    QStringList texts;
};

/// The user stopped the work.
struct Interrupted
{};

} // namespace tirn
