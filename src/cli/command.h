#pragma once

#include <span>

#include <QCommandLineParser>

namespace tirn {

/// A subcommand of the tool.
struct Command
{
    const char* name;
    /// What it does, in a line.
    const char* summary;
    /// Its arguments, as the usage shows them.
    const char* syntax;
    void (*addOptions)(QCommandLineParser& parser);
    /// Does the work, or throws UsageError, FileError or Interrupted.
    void (*run)(const QCommandLineParser& parser);
    /// Draws text, for which the toolkit's fonts must be there.
    bool needsFonts = false;
};

extern const Command kInfoCommand;
extern const Command kDumpCommand;
extern const Command kRawCommand;
extern const Command kConvertCommand;
extern const Command kPaletteCommand;
extern const Command kRenderCommand;
extern const Command kDepthCommand;

} // namespace tirn
