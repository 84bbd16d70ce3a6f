#include "ui/edits/filterdialogs.h"

#include <algorithm>

#include "base/log.h"
#include "ui/edits/customfilterform.h"
#include "ui/widgets/attributes.h"

namespace tirn {

namespace {

constexpr const char* kAll = "All channels";
constexpr const char* kChannel = "Channel";

StringVariantMap range(int minimum, int maximum, int lineStep)
{
    return {{"minimum", minimum}, {"maximum", maximum}, {"lineStep", lineStep}};
}

QString filterTitle(const Filter& filter)
{
    return QObject::tr("%1 filter").arg(QString(QObject::tr(filter.menuText)).remove("..."));
}

/// Counted from 1, as everywhere.
void addChannel(Attributes& attributes, int channels)
{
    StringVariantMap channel = range(1, std::max(1, channels), 1);
    channel["disabledwhile"] = kAll;
    attributes.setAttribute(kAll, true);
    attributes.setAttribute(kChannel, 1, channel);
}

std::optional<FilterJobParameters> askNumbers(const Filter& filter, int channels, QWidget* parent)
{
    Attributes attributes;
    for (const FilterParameter& each : filter.parameters) {
        if (each.place == FilterParameter::Place::ThreeD)
            attributes.setAttribute(each.label, each.usual != 0);
        else
            attributes.setAttribute(each.label, each.usual, range(each.minimum, each.maximum, each.step));
        if (each.place == FilterParameter::Place::Size)
            addChannel(attributes, channels);
    }
    if (!attributes.dialog(filterTitle(filter), parent))
        return {};
    FilterJobParameters parameters;
    parameters.operation = filter.operation;
    parameters.channelAll = attributes.value(kAll).toBool();
    parameters.channel = attributes.value(kChannel).toInt() - 1;
    for (const FilterParameter& each : filter.parameters)
        each.store(attributes.value(each.label).toInt(), parameters);
    return parameters;
}

std::optional<FilterJobParameters> askKernel(int channels, QWidget* parent)
{
    try {
        CustomFilterForm form(channels, parent);
        if (form.exec() != QDialog::Accepted)
            return {};
        FilterJobParameters parameters;
        parameters.operation = FilterOperation::Custom;
        parameters.kernel = form.kernel();
        parameters.channelAll = form.channel() < 0;
        parameters.channel = std::max(0, form.channel());
        return parameters;
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate custom filter form");
        return {};
    }
}

} // namespace

std::optional<FilterJobParameters> askFilter(FilterOperation operation, int channels, QWidget* parent)
{
    if (const Filter* filter = findFilter(operation))
        return filter->takesKernel ? askKernel(channels, parent) : askNumbers(*filter, channels, parent);
    FilterJobParameters parameters;
    parameters.operation = operation;
    return parameters;
}

} // namespace tirn
