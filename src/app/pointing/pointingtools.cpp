#include "app/pointing/pointingtools.h"

namespace tirn {

PointingTools::PointingTools(SceneModel& model, MainForm& mainForm, std::function<bool()> isBusy)
    : m_readout(model, std::move(isBusy),
                [form = &mainForm](const QString& text) { form->showPointed(text); }),
      m_ruler(model, m_readout, [form = &mainForm](const QString& text) { form->showNote(text); })
{
    QObject::connect(mainForm.action("rulerAction"), &QAction::toggled, &m_ruler, &RulerTool::setOn);
}

void PointingTools::follow(TirnWidget& widget)
{
    QObject::connect(&widget, &TirnWidget::hovered, &m_readout, [this, widget = &widget](QPointF pixel) {
        m_readout.follow(pixel, widget->surface().size());
    });
    QObject::connect(&widget, &TirnWidget::hoverEnded, &m_readout, &VoxelReadout::clear);
    QObject::connect(&widget, &TirnWidget::clicked, &m_ruler, [this, widget = &widget](QPointF pixel) {
        m_ruler.click(pixel, widget->surface().size());
    });
    QObject::connect(&widget, &TirnWidget::measuringEnded, &m_ruler, [this] { m_ruler.setOn(false); });
}

} // namespace tirn
