#pragma once

#include <memory>
#include <vector>

#include <QColor>
#include <QCommandLineParser>
#include <QSize>
#include <QStringList>

#include "render/offscreenstage.h"
#include "volume/meshfit.h"

namespace tirn {

/// What the options say of the view and of the pictures, before any file is opened.
struct RenderOptions
{
    QSize size = {512, 512};
    Drawing drawing = Drawing::Automatic;
    GLenum target = GL_TEXTURE_2D;
    /// View and overlays; scale and cut box belong to the volume.
    ViewState view;
    bool transparent = false;
    bool stretch = false;
    QString watermark;
    /// Three numbers, or empty for what loading gives.
    QList<double> scale;
    /// Six numbers, or empty for the whole volume.
    QList<int> cut;
    QList<int> hidden;
    /// A palette file or a colour for each of the first channels.
    struct ChannelPalette
    {
        QString file;
        QColor color;
    };
    std::vector<ChannelPalette> palettes;
    /// A depth curve file, or empty.
    QString zCurve;
    /// A surface, or empty; its colour may be invalid.
    QString mesh;
    MeshFit meshFit = MeshFit::None;
    QColor meshColor;
};

/// The options that every drawing subcommand has.
void addRenderOptions(QCommandLineParser& parser);
/// Throws UsageError for what makes no sense. `maySeeThrough` tells whether the output keeps opacity.
RenderOptions renderOptions(const QCommandLineParser& parser, bool maySeeThrough);

/// A width and a height with an x between; throws UsageError.
QSize sizeOption(const QString& option, const QString& text);
/// Six hexadecimal digits; throws UsageError.
QColor colorOption(const QString& option, const QString& text);

/// Opens and reads stacks, one a time point, and makes them the current volume of a new stage that needs no
/// display. Throws FileError and UsageError.
std::unique_ptr<OffscreenStage> makeStage(const std::vector<QStringList>& timePoints,
                                          const RenderOptions& options);

} // namespace tirn
