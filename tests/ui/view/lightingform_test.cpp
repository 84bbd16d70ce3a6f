// The lighting form, driven in the whole program.

#include "ui/view/lightingform.h"

#include <QGroupBox>
#include <QLabel>
#include <QTest>

#include "ui/widgets/floatspinbox.h"
#include "uisupport/apptest.h"
#include "uisupport/typednumber.h"

namespace tirn {
namespace {

class Lighting : public test::AppTest
{
protected:
    LightingForm& form() { return *static_cast<LightingForm*>(app().forms().create(FormId::Lighting, true)); }
    FloatSpinBox& box(const QString& name)
    {
        auto* found = form().findChild<FloatSpinBox*>("spn" + name);
        if (found == nullptr)
            throw std::runtime_error(name.toStdString());
        return *found;
    }
    void enter(const QString& name, const QString& text)
    {
        FloatSpinBox& field = box(name);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }
    /// A surface that fills the middle of the picture.
    void addSurface()
    {
        auto mesh = std::make_unique<Segmentation>();
        mesh->facets = {{{{{-0.9F, -0.9F, 0}, {0.9F, -0.9F, 0}, {0, 0.9F, 0}}}, {0, 0, 1}}};
        app().model().editLists(Change::Look,
                                [&](Scene& scene) { scene.segmentations.push_back(std::move(mesh)); });
    }
    const Light& light() { return app().scene().light; }
    const Material& material() { return app().scene().segmentations.front()->material; }
    QGroupBox& group(const QString& title)
    {
        for (QGroupBox* each : form().findChildren<QGroupBox*>()) {
            if (each->title() == title)
                return *each;
        }
        throw std::runtime_error(title.toStdString());
    }
    QColor middle()
    {
        settle();
        const QImage picture = widget().renderThread().grabNextFrame();
        return picture.pixelColor(picture.width() / 2, picture.height() / 2);
    }
};

TEST_F(Lighting, HasItsTextsAndBoxes)
{
    EXPECT_EQ(form().windowTitle(), "Lighting Model");
    const auto labels = [](const QGroupBox& in) {
        QStringList texts;
        for (const QLabel* label : in.findChildren<QLabel*>())
            texts.append(label->text());
        texts.sort();
        return texts;
    };
    EXPECT_EQ(labels(group("Light")), QStringList({"Alpha", "Ambient", "Attenuation", "Blue", "Diffuse",
                                                   "Green", "Position", "Red", "Specular", "X", "Y", "Z"}));
    EXPECT_EQ(labels(group("Material")),
              QStringList({"Alpha", "Ambient", "Blue", "Emision", "Green", "Red", "Shininess", "Specular"}));
    EXPECT_EQ(group("Light").findChildren<FloatSpinBox*>().size(), 16);
    EXPECT_EQ(group("Material").findChildren<FloatSpinBox*>().size(), 13);
    EXPECT_EQ(box("LightSpecularAlpha").toolTip(), "The colors of the light change nothing in the picture.");
    EXPECT_EQ(box("LightPosX").toolTip(), "");
}

TEST_F(Lighting, ShowsTheDefaults)
{
    addSurface();
    const std::pair<const char*, double> expected[] = {
        {"LightAmbientRed", 0.5},   {"LightDiffuseAlpha", 0.5}, {"LightSpecularBlue", 0.25},
        {"LightPosX", 0},           {"LightPosY", 1},           {"LightPosZ", 3},
        {"LightAttenuation", 0.4},  {"MatAmbientRed", 0.75},    {"MatAmbientGreen", 0},
        {"MatSpecularGreen", 0.75}, {"MatEmissionBlue", 0.5},   {"MatShininess", 0.5}};
    for (const auto& [name, value] : expected)
        EXPECT_NEAR(box(name).doubleValue(), value, 1e-6) << name;
}

TEST_F(Lighting, EachBoxOfTheLightGoesToItsNumber)
{
    form();
    const char* colours[] = {"Ambient", "Diffuse", "Specular"};
    const std::array<float, 4> Light::*members[] = {&Light::ambient, &Light::diffuse, &Light::specular};
    const char* parts[] = {"Red", "Green", "Blue", "Alpha"};
    for (int colour = 0; colour < 3; ++colour) {
        for (std::size_t part = 0; part < 4; ++part) {
            enter(QString("Light") + colours[colour] + parts[part],
                  test::typedNumber(QString("0.%1").arg(colour * 4 + int(part) + 10)));
            EXPECT_FLOAT_EQ((light().*members[colour])[part],
                            static_cast<float>(colour * 4 + int(part) + 10) / 100);
        }
    }
    enter("LightPosX", test::typedNumber("-2.5"));
    enter("LightPosY", "4");
    enter("LightPosZ", test::typedNumber("0.25"));
    enter("LightAttenuation", test::typedNumber("1.5"));
    EXPECT_EQ(light().position, (std::array<float, 4>{-2.5F, 4, 0.25F, 0})) << "w is left alone";
    EXPECT_FLOAT_EQ(light().attenuation, 1.5F);
}

TEST_F(Lighting, EachBoxOfTheMaterialGoesToItsNumber)
{
    addSurface();
    enter("MatAmbientRed", test::typedNumber("0.11"));
    enter("MatAmbientAlpha", test::typedNumber("0.12"));
    enter("MatSpecularGreen", test::typedNumber("0.13"));
    enter("MatEmissionBlue", test::typedNumber("0.14"));
    enter("MatShininess", "64");
    EXPECT_EQ(material().ambientAndDiffuse, (std::array<float, 4>{0.11F, 0, 0.75F, 0.12F}));
    EXPECT_EQ(material().specular, (std::array<float, 4>{0.25F, 0.13F, 0.25F, 1}));
    EXPECT_EQ(material().emission, (std::array<float, 4>{0.5F, 0, 0.14F, 1}));
    EXPECT_EQ(material().shininess, 64);
}

TEST_F(Lighting, WithoutASurfaceThereIsNoMaterial)
{
    EXPECT_FALSE(box("MatAmbientRed").isEnabled());
    form().materialUpdated();
    addSurface();
    EXPECT_TRUE(box("MatAmbientRed").isEnabled());
    app().mainForm().action("closeSegmentationAction")->trigger();
    EXPECT_FALSE(box("MatAmbientRed").isEnabled());
}

TEST_F(Lighting, BoxesFollowTheRecordsAndSendNothingBack)
{
    addSurface();
    form();
    const int steps = app().model().undoStack().count();
    app().model().edit(Change::Look, [](Scene& scene) {
        scene.light.attenuation = 2.123F;
        scene.segmentations.front()->material.shininess = 7.77F;
    });
    EXPECT_FLOAT_EQ(static_cast<float>(box("LightAttenuation").doubleValue()), 2.123F);
    EXPECT_FLOAT_EQ(static_cast<float>(box("MatShininess").doubleValue()), 7.77F);
    EXPECT_EQ(app().model().undoStack().count(), steps);
    EXPECT_EQ(light().attenuation, 2.123F) << "and not what the box has room to show";
    enter("LightPosX", "1");
    EXPECT_EQ(light().attenuation, 2.123F);
}

TEST_F(Lighting, IsTakenBack)
{
    addSurface();
    enter("LightAttenuation", "3");
    enter("MatShininess", "5");
    app().model().undoStack().undo();
    EXPECT_EQ(material().shininess, 0.5F);
    EXPECT_EQ(light().attenuation, 3);
    app().model().undoStack().undo();
    EXPECT_EQ(light().attenuation, 0.4F);
    EXPECT_NEAR(box("LightAttenuation").doubleValue(), 0.4, 1e-6);
    // A surface that came later keeps its own material.
    app().model().undoStack().redo();
    app().model().undoStack().redo();
    app().mainForm().action("closeSegmentationAction")->trigger();
    addSurface();
    app().model().undoStack().undo();
    EXPECT_EQ(material(), Material());
}

TEST_F(Lighting, TheMaterialShowsAndTheColoursOfTheLightDoNot)
{
    load({picFile("a.pic")});
    addSurface();
    form();
    const QColor before = middle();
    for (const char* colour : {"Ambient", "Diffuse", "Specular"})
        enter(QString("Light") + colour + "Green", "1");
    EXPECT_EQ(middle(), before);
    enter("MatEmissionGreen", "1");
    EXPECT_NE(middle(), before);
    EXPECT_EQ(middle().green(), 255);
    app().model().undoStack().undo();
    EXPECT_EQ(middle(), before);
}

TEST_F(Lighting, NumbersOutOfRangeStayInRange)
{
    addSurface();
    for (const FloatSpinBox* each : form().findChildren<FloatSpinBox*>()) {
        for (const char* text : {"-1000", "1000", "1.01", "nan", ""}) {
            enter(each->objectName().mid(3), text);
            EXPECT_GE(each->doubleValue(), each->doubleMinValue());
            EXPECT_LE(each->doubleValue(), each->doubleMaxValue());
        }
    }
    for (const float part : material().emission)
        EXPECT_TRUE(part >= 0 && part <= 1);
    EXPECT_TRUE(light().attenuation >= 0 && light().attenuation <= 100);
}

} // namespace
} // namespace tirn
