#pragma once

#include <exception>
#include <memory>

#include <QString>

#include "gl/renderthreadkind.h"
#include "image/imagefile.h"

namespace tirn {

/// What the user reads when a stack cannot be loaded.
QString loadFailureText(const ImageFile& image, RenderThreadKind kind);
/// The same for a failure without a stack.
QString loadFailureText(const QString& name);

/// Ends a load because of a stack.
class LoadFailure : public std::exception
{
public:
    /// Without a text the stack's state tells what is wrong.
    explicit LoadFailure(std::shared_ptr<const ImageFile> image, QString text = {})
        : m_image(std::move(image)), m_text(std::move(text))
    {}
    const char* what() const noexcept override { return "a stack cannot be loaded"; }
    QString text(RenderThreadKind kind) const
    {
        return m_text.isEmpty() ? loadFailureText(*m_image, kind) : m_text;
    }

private:
    std::shared_ptr<const ImageFile> m_image;
    QString m_text;
};

} // namespace tirn
