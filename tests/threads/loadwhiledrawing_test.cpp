// A stack is loaded while a render thread draws another one: what both touch must be free of races.

#include <mutex>

#include <QApplication>

#include "glsupport/renderrig.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "threads/filethread.h"
#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

TEST(LoadWhileDrawing, BothGoOnSideBySideAndTheNewStackIsDrawnAfterwards)
{
    int argc = 1;
    char name[] = "tirn";
    char* argv[] = {name, nullptr};
    const QApplication application(argc, argv);
    const LogCapture log;
    const QTemporaryDir directory;
    RenderRig rig;
    VoxelArray& shown = rig.show({denseStack(24, 20, 16)});
    rig.setTables({ColourTable(1024, 200)});
    shown.channels()[0].display.state = ChannelState::FlashOn;
    rig.scene.settings.flashRate = 1;
    rig.makeCurrent();
    rig.hidden().context().doneCurrent();

    // Handed over under a lock that the sanitizer sees, unlike the toolkit's own.
    std::mutex mutex;
    std::optional<LoadedStack> given;
    ReportList reports;
    LoadReport report = reports.collector();
    report.loaded = [&](LoadedStack stack) {
        const std::scoped_lock lock(mutex);
        given = std::move(stack);
    };
    FileThread thread(rig.hidden().context(), std::move(report));
    PicFile file;
    file.x = 40;
    file.y = 30;
    file.z = 20;
    const QString pic = file.save(directory.filePath("a.pic"));

    rig.scene.view.playing = rig.scene.currentId();
    rig.thread().requestFrame();
    for (int round = 0; round < 3; ++round) {
        rig.surface().waitForFrames(rig.surface().frames() + 2);
        LoadDescription description;
        description.filesToLoad = {{pic, pic}, {pic, pic}, {pic, pic}};
        description.timePoints = 3;
        description.channels = 2;
        description.fileType = ImageType::BioRad;
        LoadSurroundings surroundings;
        surroundings.paletteCount = 1;
        surroundings.paletteTables = &rig.paletteTables();
        ASSERT_TRUE(thread.startLoad(description, std::move(surroundings)));
        rig.surface().waitForFrames(rig.surface().frames() + 2);
        thread.wait();
        std::optional<LoadedStack> loaded;
        {
            const std::scoped_lock lock(mutex);
            loaded.swap(given);
        }
        ASSERT_TRUE(loaded);
        rig.thread().stopAndWait();
        rig.makeCurrent();
        for (auto& palette : loaded->palettes)
            rig.scene.palettes.push_back(std::move(palette));
        rig.scene.arrays.push_back(std::move(loaded->array));
        rig.hidden().context().doneCurrent();
        rig.scene.currentIndex = static_cast<int>(rig.scene.arrays.size()) - 1;
        rig.scene.current()->channels()[0].display.state = ChannelState::FlashOn;
        rig.scene.view.playing = rig.scene.currentId();
        rig.thread().requestFrame();
        rig.surface().waitForFrames(rig.surface().frames() + 2);
    }
    rig.thread().stopAndWait();
    EXPECT_EQ(rig.scene.arrays.size(), 4U);
    EXPECT_EQ(rig.scene.palettes.size(), 4U);
}

} // namespace
} // namespace tirn::test
