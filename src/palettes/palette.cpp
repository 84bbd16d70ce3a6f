#include "palettes/palette.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>

#include <QDir>

#include "base/log.h"

namespace tirn {

namespace {

constexpr int largestDepth = 24;
constexpr double degreesPerHue = 1.411764705882353;

std::atomic<int> untitledPalettes = 1;

/// Cuts a value to 0..255; what is not a number becomes 0.
double clamped(double value) { return value > 0 ? std::min(value, 255.0) : 0; }

int wholeClamped(double value) { return static_cast<int>(clamped(std::floor(value))); }

/// The identity of a table: 16 neighbours share a value in one of 4096 entries.
double identity(int index, int size)
{
    const std::int64_t whole = std::int64_t{256} * index / size;
    return static_cast<double>(whole);
}

/// The highest set bit's position, one more when lower bits are set too.
int depthForCount(std::size_t count)
{
    int depth = 0;
    int bitsSet = 0;
    for (int bit = 0; count >> bit != 0; ++bit) {
        if ((count >> bit & 1) != 0) {
            depth = bit;
            ++bitsSet;
        }
    }
    return bitsSet > 1 ? depth + 1 : depth;
}

} // namespace

Palette::Palette(const QString& name, int depth, PaletteTables* tables) : m_name(name), m_tables(tables)
{
    if (name.isEmpty())
        takeUntitledName();
    resize(depth);
    fillIdentity();
    upload();
    m_kept = values();
}

Palette::Palette(const std::vector<PaletteEntry>& entries, int components, const QString& name,
                 PaletteTables* tables)
    : m_name(name), m_tables(tables)
{
    if (name.isEmpty())
        takeUntitledName();
    resize(depthForCount(entries.size()));
    logDebug("Palette: %s is %d bit.", m_name.toUtf8().constData(), m_depth);
    if (components >= 4) {
        const std::size_t count = std::min(entries.size(), m_arrays[Red].size());
        for (std::size_t i = 0; i < count; ++i) {
            m_arrays[Red][i] = entries[i].red;
            m_arrays[Green][i] = entries[i].green;
            m_arrays[Blue][i] = entries[i].blue;
            m_arrays[Alpha][i] = entries[i].alpha;
        }
        updateAllHsv();
    } else {
        fillIdentity();
    }
    upload();
    m_kept = values();
}

Palette::Palette(const QColor& color, int depth, PaletteTables* tables) : m_tables(tables)
{
    takeUntitledName();
    resize(depth);
    ramp(color);
    upload();
    m_kept = values();
}

Palette::Palette(const Palette& other)
    : m_name(other.m_name + " copy"), m_path(other.m_path), m_depth(other.m_depth),
      m_editFlags(other.m_editFlags), m_rgbCurve(other.m_rgbCurve), m_hsvCurve(other.m_hsvCurve),
      m_arrays(other.m_arrays), m_tables(other.m_tables)
{
    logDebug("Warning palette copy constructor called!");
    // Set whatever the source says: a copy starts with its HSV opacity open to editing.
    m_editFlags.hsvAlpha = true;
    upload();
    logDebug("Completed copy constructor");
}

Palette::~Palette()
{
    if (m_tables != nullptr && m_glHandle != 0)
        m_tables->release(m_glHandle);
    logDebug("GL palette deleted");
}

void Palette::resize(int depth)
{
    m_depth = std::clamp(depth, 0, largestDepth);
    m_arrays.fill(std::vector<double>(std::size_t{1} << m_depth, 0.0));
}

void Palette::takeUntitledName()
{
    m_name = QStringLiteral("Untitled %1").arg(untitledPalettes++);
    m_modified = true;
}

void Palette::setModified(bool modified)
{
    m_modified = modified;
    if (!modified)
        m_kept = values();
}

QString Palette::fullPath() const { return QDir(m_path).absoluteFilePath(m_name); }

Palette::Components Palette::flaggedRgb() const
{
    Components flagged;
    if (m_editFlags.red)
        flagged.push_back(Red);
    if (m_editFlags.green)
        flagged.push_back(Green);
    if (m_editFlags.blue)
        flagged.push_back(Blue);
    if (m_editFlags.alpha)
        flagged.push_back(Alpha);
    return flagged;
}

Palette::Components Palette::flaggedHsv() const
{
    Components flagged;
    if (m_editFlags.hue)
        flagged.push_back(Hue);
    if (m_editFlags.saturation)
        flagged.push_back(Saturation);
    if (m_editFlags.value)
        flagged.push_back(Value);
    if (m_editFlags.hsvAlpha)
        flagged.push_back(Alpha);
    return flagged;
}

void Palette::updateHsv(int index)
{
    const auto i = static_cast<std::size_t>(index);
    const QColor color(wholeClamped(m_arrays[Red][i]), wholeClamped(m_arrays[Green][i]),
                       wholeClamped(m_arrays[Blue][i]));
    int degrees = 0;
    int saturation = 0;
    int value = 0;
    color.getHsv(&degrees, &saturation, &value);
    m_arrays[Hue][i] = std::floor(degrees * 255 / 360.0 + 0.5);
    m_arrays[Saturation][i] = saturation;
    m_arrays[Value][i] = value;
}

void Palette::updateRgb(int index)
{
    const auto i = static_cast<std::size_t>(index);
    const auto degrees = static_cast<int>(wholeClamped(m_arrays[Hue][i]) * degreesPerHue);
    QColor color;
    // A hue of 255 is 360 degrees, which is red again.
    color.setHsv(degrees % 360, wholeClamped(m_arrays[Saturation][i]), wholeClamped(m_arrays[Value][i]));
    m_arrays[Red][i] = color.red();
    m_arrays[Green][i] = color.green();
    m_arrays[Blue][i] = color.blue();
}

void Palette::updateAllHsv()
{
    for (int i = 0; i < size(); ++i)
        updateHsv(i);
}

void Palette::updateAllRgb()
{
    for (int i = 0; i < size(); ++i)
        updateRgb(i);
}

PaletteValues Palette::values() const { return {red(), green(), blue(), alpha()}; }

void Palette::setValues(const PaletteValues& values)
{
    const auto replace = [](std::vector<double>& to, const std::vector<double>& from) {
        std::copy_n(from.begin(), std::min(from.size(), to.size()), to.begin());
    };
    replace(m_arrays[Red], values.red);
    replace(m_arrays[Green], values.green);
    replace(m_arrays[Blue], values.blue);
    replace(m_arrays[Alpha], values.alpha);
    upload();
}

void Palette::pushUndo()
{
    m_undo.push_back({values(), m_spread});
    m_redo.clear();
}

void Palette::undo() { restore(m_undo, m_redo); }

void Palette::redo() { restore(m_redo, m_undo); }

void Palette::restore(std::vector<HistoryEntry>& from, std::vector<HistoryEntry>& to)
{
    if (from.empty())
        return;
    to.push_back({values(), m_spread});
    const HistoryEntry restored = std::move(from.back());
    from.pop_back();
    m_arrays[Red] = restored.values.red;
    m_arrays[Green] = restored.values.green;
    m_arrays[Blue] = restored.values.blue;
    m_arrays[Alpha] = restored.values.alpha;
    m_spread = restored.spread;
    m_overflow.fill({});
    updateAllHsv();
    upload();
}

PaletteLevels Palette::levels() const { return isSpread() ? m_spread.levels : wholeRange(size()); }

void Palette::setLevels(const PaletteLevels& levels)
{
    const std::shared_ptr<const PaletteValues> base =
        isSpread() ? m_spread.base : std::make_shared<const PaletteValues>(values());
    m_arrays[Red] = spread(base->red, levels);
    m_arrays[Green] = spread(base->green, levels);
    m_arrays[Blue] = spread(base->blue, levels);
    m_arrays[Alpha] = spread(base->alpha, levels);
    m_spread = {levels, base, std::make_shared<const PaletteValues>(values())};
    updateAllHsv();
}

void Palette::fillIdentity()
{
    for (std::vector<double>& array : m_arrays) {
        for (int i = 0; i < size() && m_depth > 0; ++i)
            array[static_cast<std::size_t>(i)] = identity(i, size());
    }
    updateAllHsv();
}

void Palette::fillRgb(const std::function<double(int)>& valueAt)
{
    fill(flaggedRgb(), valueAt);
    updateAllHsv();
}

void Palette::fillHsv(const std::function<double(int)>& valueAt)
{
    fill(flaggedHsv(), valueAt);
    updateAllRgb();
}

void Palette::fill(const Components& flagged, const std::function<double(int)>& valueAt)
{
    for (const Component component : flagged) {
        for (int i = 0; i < size(); ++i)
            m_arrays[component][static_cast<std::size_t>(i)] = valueAt(i);
    }
}

void Palette::rampRgb(double offset)
{
    if (m_depth > 0)
        fillRgb([&](int i) { return identity(i, size()) - offset; });
}

void Palette::rampHsv(double offset)
{
    if (m_depth > 0)
        fillHsv([&](int i) { return identity(i, size()) - offset; });
}

void Palette::ramp(const QColor& color)
{
    if (m_depth <= 0)
        return;
    const double count = size();
    const double div = std::max(size() / 256, 1);
    // In this order the last of 256 entries stops at 254, and 4096 entries stop at 16.
    const auto component = [&](int full, int i) { return std::floor(full / count * i / div + 0.5); };
    for (int index = 0; index < size(); ++index) {
        const auto i = static_cast<std::size_t>(index);
        m_arrays[Red][i] = component(color.red(), index);
        m_arrays[Green][i] = component(color.green(), index);
        m_arrays[Blue][i] = component(color.blue(), index);
        m_arrays[Alpha][i] = identity(index, size());
    }
    updateAllHsv();
}

namespace {

double curveValue(int index, int max, double scale, double power, double offset)
{
    const double x = index - offset;
    return x < 0 ? 0 : clamped(std::floor(std::pow(x / max, power) * (255 * scale)));
}

void logCurve(double scale, double power, double offset)
{
    logDebug("max %d scale %f power %f offset %f\n", 255, scale, power, offset);
}

} // namespace

void Palette::applyCurveRgb(double scale, double power, double offset)
{
    logCurve(scale, power, offset);
    fillRgb([&](int i) { return curveValue(i, size() - 1, scale, power, offset); });
}

void Palette::applyCurveHsv(double scale, double power, double offset)
{
    logCurve(scale, power, offset);
    fillHsv([&](int i) { return curveValue(i, size() - 1, scale, power, offset); });
}

void Palette::equalize(int kind, const StackStats& stats)
{
    std::int64_t start = 0;
    if (kind == 0)
        start = std::int64_t{stats.mode} + 1;
    else if (kind == 2)
        start = std::int64_t{stats.mode} * 2;

    const auto countAt = [&](int i) {
        const auto bin = static_cast<std::size_t>(i);
        return bin < stats.histogram.size() ? static_cast<double>(stats.histogram[bin]) : 0.0;
    };
    double total = 0;
    for (auto i = std::min<std::int64_t>(start, size()); i < size(); ++i)
        total += countAt(static_cast<int>(i));

    std::vector<double> equalized(m_arrays[Red].size(), 0.0);
    double sum = 0;
    for (auto i = std::min<std::int64_t>(start, size()); i < size(); ++i) {
        sum += countAt(static_cast<int>(i));
        // Nothing to divide by: the number that processors make of a quotient that is none.
        equalized[static_cast<std::size_t>(i)] = total > 0 ? std::floor(255.0 * sum / total) : INT_MIN;
    }
    fillRgb([&](int i) { return equalized[static_cast<std::size_t>(i)]; });
    upload();
}

std::vector<std::uint8_t> Palette::rgbaBytes() const
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(4 * m_arrays[Red].size());
    for (std::size_t i = 0; i < m_arrays[Red].size(); ++i) {
        for (const Component component : {Red, Green, Blue, Alpha})
            bytes.push_back(static_cast<std::uint8_t>(clamped(m_arrays[component][i])));
    }
    return bytes;
}

std::array<int, 4> Palette::fileValues(int index) const
{
    const auto i = static_cast<std::size_t>(index);
    return {wholeClamped(m_arrays[Red][i]), wholeClamped(m_arrays[Green][i]), wholeClamped(m_arrays[Blue][i]),
            wholeClamped(m_arrays[Alpha][i])};
}

void Palette::upload()
{
    m_drawnBytes = std::make_shared<const std::vector<std::uint8_t>>(rgbaBytes());
    if (m_tables != nullptr)
        m_glHandle = m_tables->upload(m_glHandle, *m_drawnBytes);
}

} // namespace tirn
