#pragma once

#include "app/pointing/rulertool.h"
#include "app/pointing/voxelreadout.h"
#include "render/tirnwidget.h"
#include "ui/main/mainform.h"

namespace tirn {

/// What the mouse does in the picture besides turning it: it tells of voxels, and measures between them.
class PointingTools
{
public:
    /// `isBusy` while a job works on voxels. All of it outlives this.
    PointingTools(SceneModel& model, MainForm& mainForm, std::function<bool()> isBusy);

    void follow(TirnWidget& widget);

private:
    VoxelReadout m_readout;
    RulerTool m_ruler;
};

} // namespace tirn
