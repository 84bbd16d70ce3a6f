#include "app/preferences.h"

namespace tirn {

Preferences::Preferences(SceneModel& model)
    : m_model(model),
      m_store(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2"))
{}

void Preferences::read(const TextureSides& card) { use(readSettings(*m_store, card)); }

void Preferences::use(const Settings& settings)
{
    m_settings = settings;
    m_model.edit(Change::Settings | Change::Look, [&](Scene& scene) {
        scene.settings.flashRate = settings.flashRate;
        scene.settings.drawing = static_cast<Drawing>(settings.drawing);
        scene.settings.texLimit2D = settings.texLimit2D;
        scene.settings.texLimit3D = settings.texLimit3D;
        scene.settings.moveAlongScreen = settings.moveAlongScreen;
        scene.watermark = settings.watermarkText;
    });
}

QString Preferences::keep(const Settings& chosen)
{
    // These moved on while the form was open.
    Settings settings = chosen;
    settings.stackPath = m_settings.stackPath;
    settings.palettePath = m_settings.palettePath;
    settings.rotationMode = m_settings.rotationMode;
    use(settings);
    writePreferences(chosen, *m_store);
    m_store->sync();
    if (m_store->status() == QSettings::NoError)
        return {};
    return "The preferences could not be written to " + m_store->fileName();
}

} // namespace tirn
