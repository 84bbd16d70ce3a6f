#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <QColor>
#include <QString>

#include "image/statistics/stackstats.h"
#include "palettes/paletteentry.h"
#include "palettes/palettelevels.h"
#include "palettes/palettetables.h"
#include "palettes/palettevalues.h"

namespace tirn {

/// Which curves an operation writes: the first four in the RGB view, the rest in the HSV view.
struct PaletteEditFlags
{
    bool red = false;
    bool green = false;
    bool blue = false;
    bool alpha = false;
    bool hue = false;
    bool saturation = false;
    bool value = false;
    bool hsvAlpha = false;

    bool operator==(const PaletteEditFlags&) const = default;
};

/// The numbers of a curve y = scale * (x - offset)^power, x and y being parts of the whole range.
struct PaletteCurve
{
    double offset = 0;
    double scale = 1;
    double power = 1;

    bool operator==(const PaletteCurve&) const = default;
};

/// A colour and opacity table of `1 << depth` entries for one channel, with the history of its edits.
///
/// All values lie on a 0..255 scale whatever the depth, the hue too; they may stray past the limits and are
/// clamped only where they leave: on the way to the card and to a file. Operations in bulk write only the
/// arrays whose edit flag is set. An index outside the table is ignored.
class Palette
{
public:
    /// An identity ramp of `1 << depth` entries, 0 <= depth <= 24. An empty name becomes the next untitled
    /// one. `tables` may be null (no card); otherwise it must outlive the palette, as in every constructor.
    explicit Palette(const QString& name, int depth, PaletteTables* tables = nullptr);
    /// For names in the source, which would otherwise be colour names just as well.
    Palette(const char* name, int depth, PaletteTables* tables = nullptr)
        : Palette(QString::fromUtf8(name), depth, tables)
    {}
    /// From the records of a file; the depth follows from their count. With fewer than four components the
    /// records are ignored and the palette is an identity ramp.
    Palette(const std::vector<PaletteEntry>& entries, int components, const QString& name,
            PaletteTables* tables = nullptr);
    /// A ramp from black to `color`, untitled.
    Palette(const QColor& color, int depth, PaletteTables* tables = nullptr);
    /// A copy under another name, without history, with a table of its own on the card.
    Palette(const Palette& other);
    Palette& operator=(const Palette&) = delete;
    ~Palette();

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    /// The directory of the file, empty for a palette without one.
    const QString& path() const { return m_path; }
    void setPath(const QString& path) { m_path = path; }
    /// The absolute path of `name` inside `path`.
    QString fullPath() const;
    /// True when the palette stands in its file as it is.
    bool hasFile() const { return !m_modified && !m_path.isEmpty(); }

    int depth() const { return m_depth; }
    /// The number of entries.
    int size() const { return static_cast<int>(m_arrays[Red].size()); }
    bool modified() const { return m_modified; }
    /// What it looks like when it is said not to be modified is what it is compared with from then on.
    void setModified(bool modified);
    /// Its colours are others than those that it was loaded, saved or made for a stack with.
    bool isUnsaved() const { return !(values() == m_kept); }
    /// The display list or 1D texture of the table, 0 until first uploaded.
    unsigned glHandle() const { return m_glHandle; }

    const PaletteEditFlags& editFlags() const { return m_editFlags; }
    void setEditFlags(const PaletteEditFlags& flags) { m_editFlags = flags; }
    const PaletteCurve& rgbCurve() const { return m_rgbCurve; }
    void setRgbCurve(const PaletteCurve& curve) { m_rgbCurve = curve; }
    const PaletteCurve& hsvCurve() const { return m_hsvCurve; }
    void setHsvCurve(const PaletteCurve& curve) { m_hsvCurve = curve; }

    /// The seven arrays, `size()` elements each; they keep their place in memory.
    const std::vector<double>& red() const { return m_arrays[Red]; }
    const std::vector<double>& green() const { return m_arrays[Green]; }
    const std::vector<double>& blue() const { return m_arrays[Blue]; }
    const std::vector<double>& alpha() const { return m_arrays[Alpha]; }
    const std::vector<double>& hue() const { return m_arrays[Hue]; }
    const std::vector<double>& saturation() const { return m_arrays[Saturation]; }
    const std::vector<double>& value() const { return m_arrays[Value]; }

    /// Copies of the red, green, blue and alpha arrays.
    PaletteValues values() const;
    /// Replaces the four arrays by copies, as far as both are long, and uploads. HSV stays as it is.
    void setValues(const PaletteValues& values);

    /// Write the flagged arrays at `index`, recompute the other colour space there, set `modified`.
    void setRgb(int index, double red, double green, double blue, double alpha);
    void setHsv(int index, double hue, double saturation, double value, double alpha);

    /// Steps of 1.0 on the flagged arrays at `index`; `modified` stays.
    void decrementRgb(int index);
    void incrementRgb(int index);
    void decrementHsv(int index);
    void incrementHsv(int index);

    /// Subtract or add `amount` on every flagged array and on the values that wait beyond its ends.
    void offsetDownRgb(double amount);
    void offsetUpRgb(double amount);
    void offsetDownHsv(double amount);
    void offsetUpHsv(double amount);

    /// Move the flagged arrays `places` along the index axis. What leaves at one end comes back when shifted
    /// back; the edge value extends meanwhile.
    void shiftLeftRgb(int places);
    void shiftRightRgb(int places);
    void shiftLeftHsv(int places);
    void shiftRightHsv(int places);

    /// Ramp from 0 to 255 less `offset` on the flagged arrays.
    void rampRgb(double offset);
    void rampHsv(double offset);
    /// Ramp from black to `color`, with opacity rising from 0 to 255, whatever the flags.
    void ramp(const QColor& color);
    /// value = floor(pow((i - offset) / (size - 1), power) * 255 * scale), cut to 0..255, 0 below the offset.
    void applyCurveRgb(double scale, double power, double offset);
    void applyCurveHsv(double scale, double power, double offset);
    /// Spreads the flagged RGBA arrays by the cumulative histogram, and uploads. Kind 0 leaves out all up to
    /// the mode, kind 2 all below twice the mode, any other kind nothing.
    void equalize(int kind, const StackStats& stats);

    /// Spreads the colours and opacities that the palette had before its levels were first set between black
    /// and white, whatever the flags. Any other edit since then makes the table of now the one that is
    /// spread.
    void setLevels(const PaletteLevels& levels);
    /// What was set, as long as the table is still that; otherwise the whole range.
    PaletteLevels levels() const;

    /// Remembers red, green, blue and alpha, and forgets what was undone.
    void pushUndo();
    /// Does nothing without something to undo. What shifts have pushed beyond the ends is forgotten, since it
    /// belongs to the table that goes; so does `redo`.
    void undo();
    void redo();
    bool hasUndo() const { return !m_undo.empty(); }
    bool hasRedo() const { return !m_redo.empty(); }

    /// The table as it goes to the card: red, green, blue, alpha of each index, clamped to 0..255.
    std::vector<std::uint8_t> rgbaBytes() const;
    /// Red, green, blue and alpha at `index` as whole numbers in 0..255, the way files hold them.
    std::array<int, 4> fileValues(int index) const;
    /// Makes the table the one that is drawn with, and puts it on the card. Throws the GL error code as an
    /// int.
    void upload();
    /// What `rgbaBytes` gave at the last upload; null before the first one.
    const std::shared_ptr<const std::vector<std::uint8_t>>& drawnBytes() const { return m_drawnBytes; }

private:
    enum Component { Red, Green, Blue, Alpha, Hue, Saturation, Value, ComponentCount };
    using Components = std::vector<Component>;

    struct Overflow
    {
        std::vector<double> left;
        std::vector<double> right;
    };
    /// The levels, the table that they spread, and what they made of it.
    struct SpreadTable
    {
        PaletteLevels levels;
        std::shared_ptr<const PaletteValues> base;
        std::shared_ptr<const PaletteValues> result;
    };
    struct HistoryEntry
    {
        PaletteValues values;
        SpreadTable spread;
    };

    void resize(int depth);
    void takeUntitledName();
    Components flaggedRgb() const;
    Components flaggedHsv() const;
    bool contains(int index) const { return index >= 0 && index < size(); }
    void updateHsv(int index);
    void updateRgb(int index);
    void updateAllHsv();
    void updateAllRgb();
    void offset(const Components& flagged, const Components& stacks, double amount);
    void step(const Components& components, int index, double amount);
    void shiftLeft(const Components& flagged, int places);
    void shiftRight(const Components& flagged, int places);
    /// The top of `stack`, or `edge` where it is dry; the last element becomes the edge.
    static double takeOverflow(std::vector<double>& stack, double& edge);
    void fillIdentity();
    void fillRgb(const std::function<double(int)>& valueAt);
    void fillHsv(const std::function<double(int)>& valueAt);
    void fill(const Components& flagged, const std::function<double(int)>& valueAt);
    void restore(std::vector<HistoryEntry>& from, std::vector<HistoryEntry>& to);
    bool isSpread() const { return m_spread.result != nullptr && *m_spread.result == values(); }

    QString m_name;
    QString m_path;
    int m_depth = 0;
    bool m_modified = false;
    PaletteValues m_kept;
    unsigned m_glHandle = 0;
    PaletteEditFlags m_editFlags;
    PaletteCurve m_rgbCurve;
    PaletteCurve m_hsvCurve;
    std::array<std::vector<double>, ComponentCount> m_arrays;
    std::array<Overflow, ComponentCount> m_overflow;
    SpreadTable m_spread;
    std::vector<HistoryEntry> m_undo;
    std::vector<HistoryEntry> m_redo;
    PaletteTables* m_tables;
    std::shared_ptr<const std::vector<std::uint8_t>> m_drawnBytes;
};

} // namespace tirn
