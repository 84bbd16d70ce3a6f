#pragma once

#include <QString>
#include <QStringList>

class QSettings;

namespace tirn {

/// The persistent preferences as they are read at start.
struct Settings
{
    QString stackPath;
    QString palettePath;
    QString favoritePalettesPath;
    QString watermarkText;
    /// 0 grey, 1 red, green and blue, 2 favourites, which a store does not tell from 1.
    int paletteGeneration = 1;
    /// 0 alpha, 1 maximum intensity; any other text leaves it unset, -1.
    int blending = 0;
    /// 0 for 2D texture maps, 1 for 3D ones.
    int defaultEncode = 0;
    int defaultTimeSeriesEncode = 0;
    /// Milliseconds between changes of flashing channels.
    int flashRate = 300;
    bool usePBuffers = true;
    /// Who draws volumes: 0 the processor where the driver is software, 1 the graphics card, 2 the processor.
    int drawing = 0;
    /// Longest side of a texture piece.
    int texLimit2D = 1024;
    int texLimit3D = 512;
    /// What is opened fills the window, and is stretched to the bits that it uses.
    bool fitOnOpen = true;
    bool stretchOnOpen = true;
    /// Moving a volume with the mouse goes along the screen, not along the axes of the volume.
    bool moveAlongScreen = false;
    /// How the numbers of a rotation act: 0 as steps about the screen's axes, 1 as the three angles.
    int rotationMode = 1;

    bool operator==(const Settings&) const = default;
};

/// The 3D limit that stands for no blocks at all.
constexpr int kNoTextureBlocking = 100000;

/// The settings that stand as texts in a store and in lists; their numbers are positions in the lists.
enum class SettingsChoice { PaletteGeneration, Blending, Encode, UsePBuffers, Drawing };
QStringList choiceTexts(SettingsChoice choice);

/// Writes what the preferences hold; the directories of stacks and palettes are none of it. An empty folder
/// of favourites removes its key.
void writePreferences(const Settings& settings, QSettings& store);

/// Writes what forms remember of what was chosen in them.
void writeChoices(const Settings& settings, QSettings& store);

/// The longest sides of textures that a card takes.
struct TextureSides
{
    int in2D = 0;
    int in3D = 0;
};

constexpr int kLeastTextureLimit = 64;
constexpr int kLongestFlash = 60000;

/// The power of two not above a limit that can be chosen on a card: from 64 up to its largest side.
int usableTextureLimit(int limit, int largest);

/// Reads a store; absent keys give the defaults above, and numbers from elsewhere become ones that can be
/// chosen on the card.
Settings readSettings(QSettings& store, const TextureSides& card);

} // namespace tirn
