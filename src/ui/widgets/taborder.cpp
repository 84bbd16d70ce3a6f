#include "ui/widgets/taborder.h"

#include <QWidget>

namespace tirn {

namespace {

/// A widget that hands its focus on is none itself; its parts are.
bool isTabStop(const QWidget& widget)
{
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.focusProxy() == nullptr && !widget.isWindow();
}

void appendStops(QWidget& widget, std::vector<QWidget*>& stops)
{
    if (isTabStop(widget)) {
        stops.push_back(&widget);
        return;
    }
    for (QWidget* child : widget.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        appendStops(*child, stops);
}

} // namespace

void chainTabs(const std::vector<QWidget*>& widgets)
{
    std::vector<QWidget*> stops;
    for (QWidget* widget : widgets)
        appendStops(*widget, stops);
    for (std::size_t i = 1; i < stops.size(); ++i)
        QWidget::setTabOrder(stops[i - 1], stops[i]);
}

} // namespace tirn
