#pragma once

#include <memory>

#include "gl/glinfo.h"
#include "render/glthread.h"

namespace tirn {

/// The render thread's kind for a card: the first of float buffers, paletted textures and fragment programs
/// that it has.
RenderThreadKind chooseThreadKind(const GlCapabilities& card);

/// The render thread of the host's kind.
std::unique_ptr<GLThread> makeRenderThread(const RenderHost& host);

} // namespace tirn
