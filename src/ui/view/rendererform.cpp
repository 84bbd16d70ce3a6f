#include "ui/view/rendererform.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDockWidget>
#include <QFormLayout>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include "base/log.h"
#include "scene/sceneedits.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

template <class Texts>
QStringList listOf(const Texts& texts)
{
    QStringList items;
    for (const char* text : texts)
        items.append(RendererForm::tr(text));
    return items;
}

QStringList filterNames()
{
    QStringList items;
    for (const FilterColors& pair : kFilterColors)
        items.append(RendererForm::tr(pair.name));
    return items;
}

/// Keys and wheel pass over an item that would only be refused.
void disable(const QComboBox& list, int item, const QString& reason)
{
    QStandardItem* refused = qobject_cast<QStandardItemModel*>(list.model())->item(item);
    refused->setEnabled(false);
    refused->setToolTip(reason);
}

} // namespace

RendererForm::RendererForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, Change::Look, parent), m_eyeSeparation(new FloatSpinBox(this)),
      m_gesture(services.model.newGesture())
{
    setWindowTitle(tr("Rendering Options"));
    m_renderMode = combo("cboRenderMode", listOf(kRenderModeTexts), &RendererForm::renderModeChanged);
    m_mode = combo("cboMode", {tr("Alpha blend"), tr("Max Intensity")}, &RendererForm::modeChanged);
    m_filterColors = combo("cboFilterColors", filterNames(), &RendererForm::filterColorsChanged);
    m_focalPoint = combo("cboFocalPoint", listOf(kFocalPointTexts), &RendererForm::focalPointChanged);
    m_eyeSeparation->setObjectName("spnEyeSeparation");
    m_eyeSeparation->setDoubleLineStep(0.001);
    m_eyeSeparation->setDoubleRange(0, kMostEyeSeparation);
    m_eyeSeparation->setSingleStep(10);
    m_eyeSeparation->setKeyboardTracking(false);
    connect(m_eyeSeparation, &FloatSpinBox::doubleValueChanged, this, &RendererForm::eyeSeparationChanged);
    connect(m_eyeSeparation, &FloatSpinBox::editingFinished, this,
            [this] { m_gesture = this->services().model.newGesture(); });
    for (int i = 0; i < m_renderMode->count(); ++i) {
        if (refuses(static_cast<RenderMode>(i)))
            disable(*m_renderMode, i, tr("Needs a display with a picture for each eye."));
    }
    if (!services.card.hasMaximumBlending)
        disable(*m_mode, 1, tr("Needs a video card that can blend by the maximum."));
    auto* rows = new QFormLayout;
    rows->addRow(tr("Mode"), m_renderMode);
    rows->addRow(tr("Blending"), m_mode);
    const std::pair<QString, QWidget*> stereo[] = {{tr("Filter Colors"), m_filterColors},
                                                   {tr("Eye Separation"), m_eyeSeparation},
                                                   {tr("Focal Point"), m_focalPoint}};
    for (const auto& [text, field] : stereo) {
        rows->addRow(text, field);
        m_stereoRows.insert(m_stereoRows.end(), {rows->labelForField(field), field});
    }
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rows);
    layout->addStretch(1);
    // Rows that come later only make it longer: at its side may stand the menu.
    setMinimumWidth(sizeHint().width());
    showStereoRows(false);
}

QComboBox* RendererForm::combo(const char* name, const QStringList& items, void (RendererForm::*slot)(int))
{
    auto* made = new QComboBox(this);
    made->setObjectName(name);
    made->addItems(items);
    connect(made, qOverload<int>(&QComboBox::currentIndexChanged), this, slot);
    return made;
}

void RendererForm::changeView(const QString& text, const std::function<void(ViewState&)>& change)
{
    services().model.editUndoably(text, m_gesture, Change::Look, [&](Scene& scene) { change(scene.view); });
}

void RendererForm::changeMode(GLint mode)
{
    if (mode != GL_FUNC_ADD && mode != GL_MAX) {
        logWarning("In unknown mode.  HELP!");
        return;
    }
    m_mode->setCurrentIndex(mode == GL_MAX ? 1 : 0);
}

void RendererForm::modeChanged(int index)
{
    if (index == 1 && !services().card.hasMaximumBlending) {
        refresh(Change::Look);
        return;
    }
    m_gesture = services().model.newGesture();
    changeView(tr("blending"),
               [index](ViewState& view) { view.blendMode = index == 1 ? GL_MAX : GL_FUNC_ADD; });
}

bool RendererForm::refuses(RenderMode mode) const
{
    return needsStereoWindow(mode) && !services().window.hasStereo();
}

void RendererForm::renderModeChanged(int index)
{
    const auto mode = static_cast<RenderMode>(index);
    if (refuses(mode)) {
        refresh(Change::Look);
        return;
    }
    m_gesture = services().model.newGesture();
    changeView(tr("render mode"), [mode](ViewState& view) {
        if (view.renderMode != mode)
            setRenderMode(view, mode);
    });
}

void RendererForm::filterColorsChanged(int index)
{
    m_gesture = services().model.newGesture();
    changeView(tr("filter colors"), [index](ViewState& view) { view.filterColors = index; });
}

void RendererForm::eyeSeparationChanged(double value)
{
    changeView(tr("eye separation"), [value](ViewState& view) { view.camera.eyesep = value; });
}

void RendererForm::focalPointChanged(int index)
{
    m_gesture = services().model.newGesture();
    changeView(tr("focal point"),
               [index](ViewState& view) { view.camera.focalLength = focalLengthOf(index); });
}

void RendererForm::refresh(Changes /*changes*/)
{
    const ViewState view = services().model.view();
    m_renderMode->setCurrentIndex(static_cast<int>(view.renderMode));
    changeMode(static_cast<GLint>(view.blendMode));
    m_filterColors->setCurrentIndex(view.filterColors);
    if (!m_eyeSeparation->isBeingTyped() && m_eyeSeparation->doubleValue() != view.camera.eyesep)
        m_eyeSeparation->setDoubleValue(view.camera.eyesep);
    m_focalPoint->setCurrentIndex(focalPointOf(view.camera.focalLength));
    showStereoRows(view.renderMode == RenderMode::Anaglyph);
}

void RendererForm::showStereoRows(bool shown)
{
    if (m_stereoRows.front()->isVisibleTo(this) == shown)
        return;
    for (QWidget* each : m_stereoRows)
        each->setVisible(shown);
    const auto* dock = qobject_cast<const QDockWidget*>(frame());
    // A docked form has the room that the user gave it.
    if (dock != nullptr && !dock->isFloating())
        return;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    frame()->adjustSize();
}

void RendererForm::saveSession(QDomElement& element) const
{
    writeRendering(element, services().model.view());
}

void RendererForm::loadSession(const QDomElement& element)
{
    edit(Change::Look, [&](Scene& scene) {
        ViewState& view = scene.view;
        const RenderMode before = view.renderMode;
        readRendering(element, view);
        const RenderMode wanted = refuses(view.renderMode) ? before : view.renderMode;
        view.renderMode = before;
        if (wanted != before)
            setRenderMode(view, wanted);
    });
}

} // namespace tirn
