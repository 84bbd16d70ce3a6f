#pragma once

#include <vector>

#include <QString>
#include <QStringList>

namespace tirn::test {

/// What another program reads from a TIFF file.
struct ForeignTiff
{
    int pages = 0;
    int x = 0;
    int y = 0;
    int channels = 0;
    int bits = 0;
    /// Page by page, row by row, channels interleaved.
    std::vector<int> samples;
};

/// False where Python's tifffile or libtiff's tools are not installed: tests that need them are skipped.
bool haveForeignTiff();

/// Reads with tifffile; a failed test and nothing when it cannot.
ForeignTiff readWithTifffile(const QString& name);

/// Copies the file page by page with libtiff, which reads and writes every strip. False, with what was
/// printed in `output`, when it complains.
bool copyWithLibtiff(const QString& name, const QString& target, QString* output = nullptr);
/// The same, with the channels of the copy in planes of their own.
bool copyToPlanes(const QString& name, const QString& target);

/// What libtiff says of the file.
QString tiffInfo(const QString& name);

} // namespace tirn::test
