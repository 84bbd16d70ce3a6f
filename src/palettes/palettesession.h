#pragma once

#include <memory>

#include <QDomDocument>
#include <QDomElement>
#include <QString>

#include "palettes/palette.h"

namespace tirn {

/// The `palette` element of a session: the path of the palette's file, relative to `baseDir`, or the whole
/// table where the palette does not stand in a file as it is.
QDomElement savePaletteToSession(const Palette& palette, QDomDocument& document, const QString& baseDir);

/// What a `palette` element holds: the name of a file to load, or a new untitled palette, or nothing.
struct SessionPalette
{
    QString file;
    std::unique_ptr<Palette> palette;
};

/// Reads a `palette` element. A table with another number of entries than the element's depth asks for is
/// reported in the log and gives nothing.
SessionPalette readSessionPalette(const QDomElement& element, PaletteTables* tables = nullptr);

} // namespace tirn
