#include "app/renderwindows.h"

namespace tirn {

RenderWindows::RenderWindows(SceneModel& model, QStackedWidget& stack, TirnWidget& regular,
                             TirnWidget& stereo, QPointer<TirnWidget>& current)
    : m_model(model), m_stack(stack), m_regular(regular), m_stereo(stereo), m_current(current)
{
    m_current = &regular;
    for (TirnWidget* widget : widgets()) {
        stack.addWidget(widget);
        connect(widget, &TirnWidget::windowDimensionsChanged, this, [this, widget](int width, int height) {
            if (widget == m_current)
                Q_EMIT windowDimensionsChanged(width, height);
        });
    }
    connect(&model, &SceneModel::changed, this, &RenderWindows::follow);
}

std::vector<TirnWidget*> RenderWindows::widgets() const
{
    return hasStereo() ? std::vector{&m_regular, &m_stereo} : std::vector{&m_regular};
}

void RenderWindows::changeWindowDimensions(int width, int height)
{
    m_current->changeWindowDimensions(width, height);
}

void RenderWindows::toggleWindowAspectRatio(bool on)
{
    m_keepsRatio = on;
    m_current->toggleWindowAspectRatio(on);
}

void RenderWindows::whenResized(QObject* context, std::function<void(int width, int height)> told)
{
    connect(this, &RenderWindows::windowDimensionsChanged, context, std::move(told));
}

void RenderWindows::follow(Changes changes)
{
    if (!(changes & Change::Look) || m_current == nullptr)
        return;
    TirnWidget& wanted = needsStereoWindow(m_model.view().renderMode) ? m_stereo : m_regular;
    if (&wanted != m_current)
        raise(wanted);
}

/// The view is the scene's, so that it is the same in both; no two threads draw it at once.
void RenderWindows::raise(TirnWidget& widget)
{
    for (TirnWidget* each : widgets())
        each->renderThread().stopAndWait();
    m_current->toggleWindowAspectRatio(false);
    m_current = &widget;
    m_stack.setCurrentWidget(&widget);
    widget.toggleWindowAspectRatio(m_keepsRatio);
    widget.setFocus();
    widget.requestFrame();
}

} // namespace tirn
