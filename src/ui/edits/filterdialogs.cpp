#include "ui/edits/filterdialogs.h"

#include <algorithm>

#include "base/log.h"
#include "ui/edits/customfilterform.h"
#include "ui/widgets/attributes.h"

namespace tirn {

namespace {

constexpr const char* kSize = "Filter size";
constexpr const char* kAll = "All channels";
constexpr const char* kChannel = "Channel";
constexpr const char* k3D = "3D";
constexpr const char* kPercentage = "Subtract Percentage";

StringVariantMap range(int minimum, int maximum, int lineStep)
{
    return {{"minimum", minimum}, {"maximum", maximum}, {"lineStep", lineStep}};
}

void addWindow(Attributes& attributes, int size, int channels)
{
    StringVariantMap channel = range(0, std::max(0, channels - 1), 1);
    channel["disabledwhile"] = kAll;
    attributes.setAttribute(kSize, size, range(3, 127, 2));
    attributes.setAttribute(kAll, true);
    attributes.setAttribute(kChannel, 0, channel);
}

FilterJobParameters parametersFrom(const Attributes& attributes, FilterOperation operation)
{
    FilterJobParameters parameters;
    parameters.operation = operation;
    parameters.size = attributes.value(kSize).toInt();
    parameters.channelAll = attributes.value(kAll).toBool();
    parameters.channel = attributes.value(kChannel).toInt();
    parameters.threeD = attributes.value(k3D).toBool();
    parameters.extra = attributes.value(kPercentage).toInt();
    return parameters;
}

std::optional<FilterJobParameters> askWindow(FilterOperation operation, int channels, QWidget* parent)
{
    Attributes attributes;
    if (operation == FilterOperation::BackgroundSubtract) {
        addWindow(attributes, 31, channels);
        attributes.setAttribute(kPercentage, 100, range(0, 100, 1));
    } else {
        addWindow(attributes, 3, channels);
        attributes.setAttribute(k3D, false);
    }
    if (!attributes.dialog(kFilterCaption, parent))
        return {};
    return parametersFrom(attributes, operation);
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
    switch (operation) {
    case FilterOperation::FlipX:
    case FilterOperation::FlipY:
    case FilterOperation::FlipZ:
    case FilterOperation::Invert: {
        FilterJobParameters parameters;
        parameters.operation = operation;
        return parameters;
    }
    case FilterOperation::Custom:
        return askKernel(channels, parent);
    default:
        return askWindow(operation, channels, parent);
    }
}

} // namespace tirn
