#include "app/commandline.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace tirn {

bool wantsUsage(const QStringList& arguments)
{
    static const QRegularExpression longForm("^--help$");
    static const QRegularExpression shortForm("^-[h?]$");
    for (int i = 1; i < arguments.size(); ++i) {
        if (longForm.match(arguments[i]).hasMatch() || shortForm.match(arguments[i]).hasMatch())
            return true;
    }
    return false;
}

QStringList usageText(const QString& program)
{
    // Nothing reads -b; it stands in the usage text only.
    return {"Usage: " + program + " [options] <stacks> <maps>", "-b:\t( geforce | geforcefx | radeon )"};
}

CommandLine parseCommandLine(const QStringList& arguments, const std::function<bool(const QString&)>& isStack)
{
    CommandLine line;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument.endsWith(".tir")) {
            line.session = argument;
            return line;
        }
        bool isNumber = false;
        const unsigned number = argument.toUInt(&isNumber);
        if (argument.endsWith("map"))
            line.palettes.append(argument);
        else if (isNumber)
            line.paletteIds.push_back(number);
        else if (!QFileInfo::exists(argument))
            line.missing.append(argument);
        else if (isStack(argument))
            line.stacks.append(argument);
        else
            line.unknown.append(argument);
    }
    return line;
}

} // namespace tirn
