#pragma once

#include <vector>

class QWidget;

namespace tirn {

/// Lets the tab key go through what can be reached in these widgets, one after the other, and in each of them
/// in the order in which its children were put into it.
void chainTabs(const std::vector<QWidget*>& widgets);

} // namespace tirn
