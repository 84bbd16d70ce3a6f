#pragma once

#include "scene/viewsession.h"
#include "ui/toolform.h"

class QComboBox;

namespace tirn {

class FloatSpinBox;

/// Mode of drawing, blending, and what stereo needs.
class RendererForm : public ToolForm
{
    Q_OBJECT

public:
    RendererForm(const FormServices& services, QWidget* parent);

    void saveSession(QDomElement& element) const override;
    void loadSession(const QDomElement& element) override;

public Q_SLOTS:
    /// Shows a blend mode.
    void changeMode(GLint mode);
    // What the user chooses.
    void modeChanged(int index);
    void renderModeChanged(int index);
    void filterColorsChanged(int index);
    void eyeSeparationChanged(double value);
    void focalPointChanged(int index);

protected:
    void refresh(Changes changes) override;

private:
    QComboBox* combo(const char* name, const QStringList& items, void (RendererForm::*slot)(int));
    bool refuses(RenderMode mode) const;
    void changeView(const QString& text, const std::function<void(ViewState&)>& change);
    void showStereoRows(bool shown);

    QComboBox* m_renderMode;
    QComboBox* m_mode;
    QComboBox* m_filterColors;
    FloatSpinBox* m_eyeSeparation;
    QComboBox* m_focalPoint;
    /// Labels and fields that only an anaglyph has.
    std::vector<QWidget*> m_stereoRows;
    int m_gesture;
};

} // namespace tirn
