// The edits of single entries, offsets and shifts of a palette.

#include <algorithm>

#include "palettes/palette.h"

namespace tirn {

void Palette::setRgb(int index, double red, double green, double blue, double alpha)
{
    if (!contains(index))
        return;
    const double values[] = {red, green, blue, alpha};
    for (const Component component : flaggedRgb())
        m_arrays[component][static_cast<std::size_t>(index)] = values[component - Red];
    updateHsv(index);
    m_modified = true;
}

void Palette::setHsv(int index, double hue, double saturation, double value, double alpha)
{
    if (!contains(index))
        return;
    const double values[] = {alpha, hue, saturation, value};
    for (const Component component : flaggedHsv())
        m_arrays[component][static_cast<std::size_t>(index)] = values[component - Alpha];
    updateRgb(index);
    m_modified = true;
}

void Palette::step(const Components& components, int index, double amount)
{
    for (const Component component : components)
        m_arrays[component][static_cast<std::size_t>(index)] += amount;
}

void Palette::decrementRgb(int index)
{
    if (!contains(index))
        return;
    step(flaggedRgb(), index, -1.0);
    updateHsv(index);
}

void Palette::incrementRgb(int index)
{
    if (!contains(index))
        return;
    step(flaggedRgb(), index, 1.0);
    updateHsv(index);
}

void Palette::decrementHsv(int index)
{
    if (!contains(index))
        return;
    step(flaggedHsv(), index, -1.0);
    updateRgb(index);
}

void Palette::incrementHsv(int index)
{
    if (!contains(index))
        return;
    Components components = flaggedHsv();
    // Upwards the flag of opacity moves the value instead, so that both flags together add 2.
    std::replace(components.begin(), components.end(), Alpha, Value);
    step(components, index, 1.0);
    updateRgb(index);
}

void Palette::offset(const Components& flagged, const Components& stacks, double amount)
{
    const auto add = [amount](std::vector<double>& values) {
        for (double& value : values)
            value += amount;
    };
    for (const Component component : flagged)
        add(m_arrays[component]);
    // The values beyond the ends follow whatever the flags say, so that they fit when they come back.
    for (const Component component : stacks) {
        add(m_overflow[component].left);
        add(m_overflow[component].right);
    }
}

void Palette::offsetDownRgb(double amount) { offsetUpRgb(-amount); }

void Palette::offsetUpRgb(double amount)
{
    offset(flaggedRgb(), {Red, Green, Blue, Alpha}, amount);
    updateAllHsv();
}

void Palette::offsetDownHsv(double amount) { offsetUpHsv(-amount); }

void Palette::offsetUpHsv(double amount)
{
    offset(flaggedHsv(), {Hue, Saturation, Value, Alpha}, amount);
    updateAllRgb();
}

void Palette::shiftLeft(const Components& flagged, int places)
{
    for (const Component component : flagged) {
        std::vector<double>& array = m_arrays[component];
        Overflow& overflow = m_overflow[component];
        for (int left = places; left > 0; left -= size()) {
            const auto count = std::min(left, size());
            double edge = array.back();
            overflow.left.insert(overflow.left.end(), array.begin(), array.begin() + count);
            std::move(array.begin() + count, array.end(), array.begin());
            for (auto place = array.end() - count; place != array.end(); ++place)
                *place = takeOverflow(overflow.right, edge);
        }
    }
}

void Palette::shiftRight(const Components& flagged, int places)
{
    for (const Component component : flagged) {
        std::vector<double>& array = m_arrays[component];
        Overflow& overflow = m_overflow[component];
        for (int left = places; left > 0; left -= size()) {
            const auto count = std::min(left, size());
            double edge = array.front();
            overflow.right.insert(overflow.right.end(), array.rbegin(), array.rbegin() + count);
            std::move_backward(array.begin(), array.end() - count, array.end());
            for (auto place = array.rend() - count; place != array.rend(); ++place)
                *place = takeOverflow(overflow.left, edge);
        }
    }
}

double Palette::takeOverflow(std::vector<double>& stack, double& edge)
{
    if (stack.empty())
        return edge;
    const double value = stack.back();
    if (stack.size() == 1)
        edge = value;
    stack.pop_back();
    return value;
}

void Palette::shiftLeftRgb(int places)
{
    shiftLeft(flaggedRgb(), places);
    updateAllHsv();
}

void Palette::shiftRightRgb(int places)
{
    shiftRight(flaggedRgb(), places);
    updateAllHsv();
}

void Palette::shiftLeftHsv(int places)
{
    shiftLeft(flaggedHsv(), places);
    updateAllRgb();
}

void Palette::shiftRightHsv(int places)
{
    shiftRight(flaggedHsv(), places);
    updateAllRgb();
}

} // namespace tirn
