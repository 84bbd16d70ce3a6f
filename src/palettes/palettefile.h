#pragma once

#include <memory>
#include <vector>

#include <QString>
#include <QStringList>

#include "palettes/palette.h"

namespace tirn {

/// Reads and writes palette files: `.map` text, `.col` (Amira colormap), `.lut` (Andor IQ text; MetaMorph
/// binary, read only).
class PaletteFile
{
public:
    explicit PaletteFile(QString fileName) : m_fileName(std::move(fileName)) {}

    /// Recognises the format and fills `entries` and `comments`. False, with the reason logged, when the file
    /// cannot be opened or holds another number of entries than a palette may have.
    bool read();
    /// A palette of the entries that were read, named after the file without its directory.
    std::unique_ptr<Palette> makePalette(PaletteTables* tables = nullptr) const;
    /// Writes in the format of the name's ending. Refuses, writing nothing, when the file exists; false, too,
    /// when it cannot be written whole, and then no part of it is left.
    bool write(const Palette& palette) const;
    /// The same over a file that exists, which stays as it was when writing fails.
    bool replace(const Palette& palette) const;

    const QString& fileName() const { return m_fileName; }
    /// The lines that are no entries, in file order.
    const QStringList& comments() const { return m_comments; }
    const std::vector<PaletteEntry>& entries() const { return m_entries; }

private:
    QString m_fileName;
    QStringList m_comments;
    std::vector<PaletteEntry> m_entries;
};

} // namespace tirn
