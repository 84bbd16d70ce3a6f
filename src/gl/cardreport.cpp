#include "gl/cardreport.h"

namespace tirn {

namespace {

QString line(const char* need, bool found)
{
    return QString("%1: %2\n").arg(QLatin1String(need), QLatin1String(found ? "yes" : "no"));
}

} // namespace

QString cardReport(const GlCapabilities& card)
{
    struct Row
    {
        bool found;
        const char* yes;
        const char* no;
    };
    const Row rows[] = {
        {card.canEditPalettes(), "Your video card supports real time palette editing.\n",
         "Your video card does not support real time palette editing.\nTirn will not work for you"},
        {card.hasPBuffer, "Your video card supports pbuffers allowing arbitrary size images to be saved.\n",
         "Your video card does not support pbuffers, so what you see is what you get when saving.\n"
         "Do not overlap the main window while saving!"},
        {card.hasTexture3D,
         "Your video card supports 3D texture maps allowing stacks to consume less memory, but render at "
         "reduced speed.\n",
         "Your video card does not support 3D texture maps.\n"},
        {card.hasFragmentProgram, "12 and 16bit images are supported on this video card.\n",
         "12 and 16bit images are not supported on this video card.  We recommend a GeForceFX or Radeon "
         "9700+.\n"},
        {card.hasTexture3D && card.hasFragmentProgram,
         "Real time depth based intensity correction is available.\n",
         "Features needed for real time depth based intensity correct are not available.\n"},
    };
    QString report;
    for (const Row& row : rows) {
        report += QLatin1String(row.found ? row.yes : row.no);
        // Two of the lines have no end of their own.
        if (!report.endsWith('\n'))
            report += '\n';
    }
    return report;
}

QString requirementsReport(const GlCapabilities& card)
{
    const bool programs = card.hasFragmentProgram && card.hasMultitexture;
    const bool palettes = card.hasPalettedTexture && card.hasSharedPalette;
    QString report = "OpenGL driver: " + card.renderer + "\n\n";
    report += "What Tirn needs of an OpenGL driver, and whether this one has it:\n";
    report += line("Fragment programs and multitexture, or shared paletted textures, to draw volumes",
                   programs || palettes);
    report += line("Fragment programs, for 12 and 16 bits", card.hasFragmentProgram);
    report += line("Maximum blending, for maximum intensity", card.hasMaximumBlending);
    report += line("3D textures, for 3D texture maps and depth correction", card.hasTexture3D);
    report += line("Framebuffer objects, for pictures larger than the window", card.hasPBuffer);
    report +=
        QString("Largest textures: %1 (2D) and %2 (3D) voxels a side; larger stacks are cut into blocks.\n")
            .arg(card.maxTexture2D)
            .arg(card.maxTexture3D);
    report += "No particular video card is needed: a driver that draws on the processor will do, too, "
              "but more slowly.\n";
    return report;
}

} // namespace tirn
