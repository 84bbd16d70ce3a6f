#pragma once

#include <functional>

#include <QDialog>

#include "gl/glinfo.h"
#include "session/settings.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace tirn {

class FileChooser;

/// The preferences: takes them when it is shown, and gives them when Ok is pressed. It stores nothing itself.
class PreferencesForm : public QDialog
{
    Q_OBJECT

public:
    /// `read` gives the preferences and the card when the form is shown.
    struct Shown
    {
        Settings settings;
        GlCapabilities card;
    };
    PreferencesForm(std::function<Shown()> read, QWidget* parent);

    /// What stands in the form.
    Settings settings() const;

public Q_SLOTS:
    /// Gives the preferences away and closes the form.
    void OkClicked();

Q_SIGNALS:
    void chosen(const tirn::Settings& settings);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void fill(const Shown& shown);
    QComboBox* combo(const char* name, const QStringList& items);

    std::function<Shown()> m_read;
    Settings m_settings;
    FileChooser* m_favorites;
    QLineEdit* m_watermark;
    QComboBox* m_generation;
    QComboBox* m_blending;
    QComboBox* m_encode;
    QComboBox* m_timeSeriesEncode;
    QSpinBox* m_flashRate;
    QComboBox* m_usePBuffers;
    QComboBox* m_limit2D;
    QComboBox* m_limit3D;
    QLabel* m_paletteSize;
    QLabel* m_largest2D;
    QLabel* m_largest3D;
};

/// The limits that a card leaves to choose from: powers of two from 64 up to its largest side.
QStringList textureLimits(int largest);
/// The position of a limit in that list.
int textureLimitItem(int limit);

} // namespace tirn
