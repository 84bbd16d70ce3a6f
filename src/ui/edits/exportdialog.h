#pragma once

#include <optional>

#include "threads/exportjob.h"

class QWidget;

namespace tirn {

/// Asks for the name of an export, beginning in the folder `stackPath`, and before files are overwritten.
/// Nothing when the user changes their mind.
std::optional<ExportJob> askExport(const VoxelArray& array, ExportMode mode, const QString& stackPath,
                                   QWidget* parent);

} // namespace tirn
