#pragma once

#include <vector>

#include <QPointer>
#include <QStackedWidget>

#include "render/tirnwidget.h"
#include "ui/formservices.h"

namespace tirn {

/// The plain window and the one with a picture for each eye, of which one is in front and in use. Follows the
/// mode of the view. Where there is no stereo both are the same.
class RenderWindows : public QObject, public WindowService
{
    Q_OBJECT

public:
    /// Puts the widgets into the stack, the plain one in front. `current` is where everyone finds the one in
    /// use.
    RenderWindows(SceneModel& model, QStackedWidget& stack, TirnWidget& regular, TirnWidget& stereo,
                  QPointer<TirnWidget>& current);

    /// Each once.
    std::vector<TirnWidget*> widgets() const;

    QSize pictureSize() const override { return m_current->size(); }
    void changeWindowDimensions(int width, int height) override;
    void toggleWindowAspectRatio(bool on) override;
    bool hasStereo() const override { return &m_regular != &m_stereo; }
    void whenResized(QObject* context, std::function<void(int width, int height)> told) override;

Q_SIGNALS:
    void windowDimensionsChanged(int width, int height);

private:
    void follow(Changes changes);
    void raise(TirnWidget& widget);

    SceneModel& m_model;
    QStackedWidget& m_stack;
    TirnWidget& m_regular;
    TirnWidget& m_stereo;
    QPointer<TirnWidget>& m_current;
    bool m_keepsRatio = false;
};

} // namespace tirn
