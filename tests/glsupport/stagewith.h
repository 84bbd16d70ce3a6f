#pragma once

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "render/offscreenstage.h"

namespace tirn::test {

/// A stage without a display that shows a stack, channel c with table c.
inline std::unique_ptr<OffscreenStage> stageWith(const PlainStack& stack,
                                                 const std::vector<ColourTable>& tables)
{
    QString error;
    auto stage = OffscreenStage::withoutDisplay(error);
    EXPECT_NE(stage, nullptr) << error.toStdString();
    VolumeSpec spec;
    stage->show(makeVolume({stack}, spec));
    for (std::size_t c = 0; c < tables.size(); ++c) {
        stage->scene.palettes.push_back(paletteOf(tables[c], stage->paletteTables()));
        stage->scene.current()->channels()[c].display.palette = static_cast<int>(c);
    }
    return stage;
}

} // namespace tirn::test
