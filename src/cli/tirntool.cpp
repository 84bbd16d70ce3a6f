// The viewer's core without a window: `tirntool --help`.

#include <memory>
#include <new>

#include <QCommandLineParser>
#include <QGuiApplication>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/toolerror.h"

namespace tirn {

namespace {

enum ExitCode { Done = 0, FileFailed = 1, WrongUsage = 2, Stopped = 130 };

const Command* const kCommands[] = {&kInfoCommand,    &kDumpCommand,   &kRawCommand,   &kConvertCommand,
                                    &kPaletteCommand, &kRenderCommand, &kMovieCommand, &kDepthCommand};

const Command* findCommand(const QString& name)
{
    for (const Command* command : kCommands) {
        if (name == QLatin1String(command->name))
            return command;
    }
    return nullptr;
}

QString generalHelp()
{
    QString text = "Usage: tirntool SUBCOMMAND [OPTIONS] ARGUMENTS\n"
                   "Reads, measures and converts microscope stacks.\n\nSubcommands:\n";
    for (const Command* command : kCommands)
        text +=
            QString("  %1 %2\n").arg(QLatin1String(command->name), -9).arg(QLatin1String(command->summary));
    return text +
           "\nOptions of all subcommands:\n"
           "  --overwrite  Replace files that are there.\n"
           "  --verbose    Print the log on stderr.\n"
           "  --help       Print this, or with a subcommand what it takes.\n"
           "  --version    Print the version.\n\n"
           "A stack is one FILE, or several where its format keeps channels (PIC) or layers (TIFF series)\n"
           "apart. OUT may be - for stdout where voxels are written. -- ends the options.\n"
           "Exit code: 0 done, 1 a file could not be read or written, 2 wrong usage, 130 stopped by "
           "Ctrl-C.\n";
}

QString commandHelp(const Command& command, const QCommandLineParser& parser)
{
    QString options = parser.helpText();
    options.remove(0, options.indexOf("Options:"));
    return QString("Usage: tirntool %1 %2\n%3\n\n%4")
        .arg(QLatin1String(command.name), QLatin1String(command.syntax), QLatin1String(command.summary),
             options);
}

/// Takes the subcommand out of the arguments; null when none is named.
const Command* takeCommand(QStringList& arguments)
{
    for (int i = 1; i < arguments.size() && arguments[i] != QLatin1String("--"); ++i) {
        if (const Command* command = findCommand(arguments[i])) {
            arguments.removeAt(i);
            return command;
        }
    }
    return nullptr;
}

void addCommonOptions(QCommandLineParser& parser)
{
    parser.addOption({"overwrite", "Replace files that are there."});
    parser.addOption({"verbose", "Print the log on stderr."});
    parser.addOption({{"h", "help"}, "Print this help."});
    parser.addOption({"version", "Print the version."});
}

void runCommand(const Command& command, const QStringList& arguments)
{
    QCommandLineParser parser;
    command.addOptions(parser);
    addCommonOptions(parser);
    const bool parsed = parser.parse(arguments);
    if (parser.isSet("help")) {
        Console::answer(commandHelp(command, parser));
        return;
    }
    if (!parsed) {
        QString text = parser.errorText();
        if (text.endsWith('.'))
            text.chop(1);
        throw UsageError{text};
    }
    Console::setVerbose(parser.isSet("verbose"));
    command.run(parser);
}

void run(QStringList arguments)
{
    const Command* command = takeCommand(arguments);
    if (arguments.contains("--version")) {
        Console::answer("tirntool " TIRN_VERSION "\n");
    } else if (command != nullptr) {
        runCommand(*command, arguments);
    } else if (arguments.contains("--help") || arguments.contains("-h")) {
        Console::answer(generalHelp());
    } else {
        const QString first = arguments.value(1);
        throw UsageError{first.isEmpty() ? QString("no subcommand") : "'" + first + "' is no subcommand"};
    }
}

int runTool(const QStringList& arguments)
{
    Console::catchInterrupts();
    try {
        run(arguments);
        return Done;
    } catch (const UsageError& error) {
        Console::line(error.text + "; see tirntool --help");
        return WrongUsage;
    } catch (const FileError& error) {
        Console::report(error.file, error.texts);
        return FileFailed;
    } catch (const Interrupted&) {
        Console::line("stopped");
        return Stopped;
    } catch (const std::bad_alloc& error) {
        Console::line(QString("not enough memory (%1)").arg(QLatin1String(error.what())));
        return FileFailed;
    }
}

} // namespace

/// The toolkit's object; with fonts, which need no display, only for commands that draw.
static std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const Command* command = takeCommand(arguments);
    if (command == nullptr || !command->needsFonts)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Drivers keep compiled programs in the user's folders; the tool writes nothing but its results.
    for (const char* cache : {"MESA_SHADER_CACHE_DISABLE", "MESA_GLSL_CACHE_DISABLE"})
        qputenv(cache, "true");
    qputenv("__GL_SHADER_DISK_CACHE", "0");
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace tirn

int main(int argc, char** argv)
{
    // The toolkit itself has something to say at its start.
    tirn::Console::setVerbose(false);
    const std::unique_ptr<QCoreApplication> application = tirn::makeApplication(argc, argv);
    return tirn::runTool(QCoreApplication::arguments());
}
