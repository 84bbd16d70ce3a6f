#include "gl/gltable.h"

#include <atomic>
#include <mutex>

#include <QOpenGLContext>

namespace tirn {

namespace {

GlTable driverTable;
std::atomic<const GlTable*> tableInUse = &driverTable;

} // namespace

GlTable GlTable::load(const std::function<Function(const char*)>& resolve)
{
    GlTable table;
#define TIRN_GL_LOAD(result, name, parameters, arguments)                                                    \
    table.name = reinterpret_cast<decltype(table.name)>(resolve("gl" #name));
    TIRN_GL_ENTRIES(TIRN_GL_LOAD)
#undef TIRN_GL_LOAD
    return table;
}

const GlTable& gl() { return *tableInUse.load(std::memory_order_acquire); }

bool loadGl()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (context == nullptr)
        return false;
    loadGl([context](const char* name) { return context->getProcAddress(name); });
    return true;
}

void loadGl(const std::function<GlTable::Function(const char*)>& resolve)
{
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    if (driverTable.BindTexture == nullptr)
        driverTable = GlTable::load(resolve);
}

GlTableScope::GlTableScope(const GlTable& table) : m_previous(tableInUse.exchange(&table)) {}

GlTableScope::~GlTableScope() { tableInUse.store(m_previous); }

} // namespace tirn
