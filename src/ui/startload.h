#pragma once

#include <QWidget>

#include "ui/openservices.h"

namespace tirn {

/// The description that a load begins with, before a form fills it.
LoadDescription freshLoad(const OpenServices& services);

/// Hides the form, lets the screen follow, and starts the load. While another one is under way the form comes
/// back, if it was there, with a box that says so.
void startLoad(QWidget& form, const OpenServices& services, LoadDescription load);

} // namespace tirn
