#include "scene/light.h"

#include <atomic>

#include "gl/gltable.h"

namespace tirn {

namespace {

/// Every driver has eight lights. The first one is white by itself and never used.
constexpr int kLights = 8;

std::atomic<int> lightsMade = 0;

} // namespace

Light::Light() { ++lightsMade; }

int Light::count() { return lightsMade; }

void Light::apply() const
{
    // Numbers past the driver's lights begin again, so that many windows draw as one does.
    const auto light = static_cast<GLenum>(GL_LIGHT1 + (lightsMade - 1) % (kLights - 1));
    gl().Enable(light);
    for (const auto* vector : {&ambient, &diffuse, &specular, &position})
        gl().Lightfv(light, GL_POSITION, vector->data());
    gl().Lightf(light, GL_LINEAR_ATTENUATION, attenuation);
}

} // namespace tirn
