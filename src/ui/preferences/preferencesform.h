#pragma once

#include <vector>

#include "ui/toolform.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace tirn {

class FileChooser;

/// The preferences: takes them when it is shown, and gives them to be stored when Ok is pressed.
class PreferencesForm : public ToolForm
{
    Q_OBJECT

public:
    PreferencesForm(const FormServices& services, QWidget* parent);

    /// What stands in the form.
    Settings settings() const;

public Q_SLOTS:
    /// Gives the preferences away and closes the form.
    void OkClicked();

protected:
    void refresh(Changes changes) override;

private:
    QComboBox* combo(const char* name, const QStringList& items);

    Settings m_settings;
    FileChooser* m_favorites;
    QLineEdit* m_watermark;
    QComboBox* m_generation;
    QComboBox* m_blending;
    QComboBox* m_encode;
    QComboBox* m_timeSeriesEncode;
    QSpinBox* m_flashRate;
    std::vector<QCheckBox*> m_switches;
    QComboBox* m_usePBuffers;
    QComboBox* m_drawing;
    QComboBox* m_limit2D;
    QComboBox* m_limit3D;
    QLabel* m_paletteSize;
    QLabel* m_largest2D;
    QLabel* m_largest3D;
};

/// The limits that a card leaves to choose from: powers of two from 64 up to its largest side; 64 always.
QStringList textureLimits(int largest);

} // namespace tirn
