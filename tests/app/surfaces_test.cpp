// Surfaces from a file to the picture, in the whole program.

#include <QFile>
#include <QInputDialog>
#include <QTest>

#include "support/stlfile.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn {
namespace {

class Surfaces : public test::AppTest
{
protected:
    QString write(const QByteArray& bytes)
    {
        QFile file(path("mesh.stl"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }
    QString triangle(const QString& a, const QString& b, const QString& c)
    {
        return write(test::asciiStl(test::facetText(a, b, c)));
    }
    /// Loads a surface and answers the question for its place; returns the items of the question, and the
    /// text of the box that comes last.
    QStringList loadWith(const QString& name, const QString& fit)
    {
        test::ModalAnswers answers;
        QStringList items;
        answers.add([&](QDialog& dialog) {
            auto& question = static_cast<QInputDialog&>(dialog);
            items = question.comboBoxItems();
            EXPECT_EQ(question.textValue(), "volume") << "first";
            question.setTextValue(fit);
            fit.isEmpty() ? question.reject() : question.accept();
        });
        app().loads().loadSegmentation(name);
        QCoreApplication::processEvents();
        settle();
        return items << answers.shown().last();
    }
    const MeshBounds& bounds() { return app().scene().segmentations.front()->bounds; }
    QImage picture()
    {
        settle();
        return widget().renderThread().grabNextFrame();
    }
    void setVoxelSize(double size)
    {
        app().model().edit(Change::Voxels, [size](Scene& scene) {
            scene.current()->stack().dimX = scene.current()->stack().dimY = scene.current()->stack().dimZ =
                size;
        });
    }
};

TEST_F(Surfaces, AreAskedForTheirPlaceOnce)
{
    load({picFile("a.pic", 16, 12, 8)});
    const QString name = triangle("0 0 0", "8 0 0", "0 8 0");
    EXPECT_EQ(loadWith(name, "volume"),
              QStringList({"volume", "voxels", "Segmentation: " + name + " loaded."}))
        << "microns mean nothing without a voxel size";
    setVoxelSize(2);
    EXPECT_EQ(loadWith(name, "microns"),
              QStringList({"volume", "voxels", "microns", "Segmentation: " + name + " loaded."}));
    EXPECT_TRUE(log.contains("Segmentation " + name + " loaded."));
}

/// In 16 x 12 x 8 a voxel is 2 / 16 wide; x runs up from -1, y down from 0.75.
TEST_F(Surfaces, LieWhereTheAnswerSays)
{
    load({picFile("a.pic", 16, 12, 8)});
    const QString name = triangle("0 0 0", "8 0 0", "0 8 0");
    loadWith(name, "volume");
    EXPECT_FLOAT_EQ(bounds().min[0], -0.75F) << "12 of 16 voxels high, and as wide";
    EXPECT_FLOAT_EQ(bounds().max[1], 0.75F);
    loadWith(name, "voxels");
    EXPECT_FLOAT_EQ(bounds().min[0], -1 + 0.0625F);
    EXPECT_FLOAT_EQ(bounds().max[0], 0.0625F);
    EXPECT_FLOAT_EQ(bounds().max[1], 0.75F - 0.0625F);
    setVoxelSize(2);
    loadWith(name, "microns");
    EXPECT_FLOAT_EQ(bounds().min[0], -1);
    EXPECT_FLOAT_EQ(bounds().max[0], -0.5F);
    EXPECT_FLOAT_EQ(bounds().max[1], 0.75F);
    EXPECT_EQ(app().scene().segmentations.size(), 1U) << "the newest replaces the former";
}

TEST_F(Surfaces, WithoutAStackAreDrawingUnits)
{
    const QString name = triangle("0 0 0", "0.5 0 0", "0 0.25 0");
    app().loads().loadSegmentation(name);
    EXPECT_EQ(takeBox(), "Segmentation: " + name + " loaded.");
    EXPECT_EQ(bounds().max, (Vector3f{0.5F, 0.25F, 0}));
}

TEST_F(Surfaces, AnAnswerThatIsRefusedKeepsWhatIsThere)
{
    load({picFile("a.pic")});
    loadWith(triangle("0 0 0", "8 0 0", "0 8 0"), "voxels");
    const std::uint64_t before = app().scene().segmentations.front()->revision;
    EXPECT_EQ(loadWith(triangle("0 0 0", "1 0 0", "0 1 0"), "").last(), "Load Segmentation");
    ASSERT_EQ(app().scene().segmentations.size(), 1U);
    EXPECT_EQ(app().scene().segmentations.front()->revision, before);
}

TEST_F(Surfaces, AreDrawnHiddenAndClosed)
{
    load({picFile("a.pic")});
    const QImage before = picture();
    loadWith(triangle("0 0 0", "8 0 0", "0 8 0"), "volume");
    QAction* shown = app().mainForm().action("showSegmentationAction");
    QAction* close = app().mainForm().action("closeSegmentationAction");
    const QImage drawn = picture();
    EXPECT_NE(drawn, before);
    // The emission and what all surfaces get of light: red and blue alike, and no green.
    const QColor colour = drawn.pixelColor(drawn.width() * 3 / 8, drawn.height() / 2);
    EXPECT_EQ(colour.green(), 0);
    EXPECT_GE(colour.red(), 127);
    EXPECT_EQ(colour.red(), colour.blue());
    ASSERT_TRUE(shown->isEnabled() && shown->isChecked());
    shown->trigger();
    EXPECT_EQ(picture(), before);
    shown->trigger();
    EXPECT_EQ(picture(), drawn);
    close->trigger();
    EXPECT_EQ(picture(), before);
    EXPECT_FALSE(shown->isEnabled() || close->isEnabled());
    loadWith(triangle("0 0 0", "8 0 0", "0 8 0"), "volume");
    app().closeAll();
    EXPECT_TRUE(app().scene().segmentations.empty());
}

TEST_F(Surfaces, FilesThatHoldNoneSayWhyInTheLogAndLoseNothing)
{
    load({picFile("a.pic")});
    loadWith(triangle("0 0 0", "8 0 0", "0 8 0"), "volume");
    const QString name = write("solid m\nnothing of the kind\n");
    app().loads().loadSegmentation(name);
    EXPECT_EQ(takeBox(), "Load Error: Failed to load " + name);
    EXPECT_TRUE(log.contains("can't find normal"));
    app().loads().loadSegmentation(path("missing.stl"));
    EXPECT_EQ(takeBox(), "Load Error: Failed to load " + path("missing.stl"));
    EXPECT_EQ(app().scene().segmentations.size(), 1U);
}

TEST_F(Surfaces, DamagedOnesAreDrawnAsFarAsTheyGo)
{
    load({picFile("a.pic")});
    const float nan = std::nanf("");
    const test::StlNumbers good = {0, 0, 1, 0, 0, 0, 8, 0, 0, 0, 8, 0};
    const test::StlNumbers bad = {nan, nan, nan, nan, 1, nan, 2, nan, 3, nan, nan, nan};
    // A count of which the file holds nothing, and facets that are no numbers.
    loadWith(write(test::binaryStl({good, bad}, 0xffffffffU)), "volume");
    EXPECT_EQ(app().scene().segmentations.front()->facets.size(), 2U);
    EXPECT_TRUE(std::isfinite(bounds().min[0]) && std::isfinite(bounds().max[2]));
    EXPECT_FALSE(picture().isNull());
    // Cut short within the second facet.
    loadWith(write(test::binaryStl({good, good}).chopped(20)), "volume");
    EXPECT_EQ(app().scene().segmentations.front()->facets.size(), 1U);
    EXPECT_FALSE(picture().isNull());
}

} // namespace
} // namespace tirn
