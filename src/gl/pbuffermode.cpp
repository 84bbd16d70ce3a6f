#include "gl/pbuffermode.h"

#include <QList>

#include "base/log.h"

namespace tirn {

namespace {

/// The widest component that a buffer can have.
constexpr int kMostBits = 32;

struct Token
{
    QByteArray name;
    int number = 1;
};

QList<Token> tokensOf(const QByteArray& mode)
{
    QList<Token> tokens;
    for (const QByteArray& word : mode.split(' ')) {
        if (word.isEmpty())
            continue;
        const auto equals = word.indexOf('=');
        Token token{equals < 0 ? word : word.left(equals), 1};
        if (equals >= 0 && equals + 1 < word.size())
            token.number = word.mid(equals + 1).toInt();
        tokens.append(token);
    }
    return tokens;
}

/// A word for colour components: how many they are and the attributes that their bits go to.
struct ComponentWord
{
    const char* name;
    int components;
    std::vector<int> attributes;
};

const std::vector<ComponentWord>& componentWords()
{
    static const std::vector<ComponentWord> words = {
        {"rgb", 3, {wgl::kRedBits, wgl::kGreenBits, wgl::kBlueBits}},
        {"rgba", 4, {wgl::kRedBits, wgl::kGreenBits, wgl::kBlueBits, wgl::kAlphaBits}},
        {"alpha", 1, {wgl::kAlphaBits}},
        {"r", 1, {wgl::kRedBits}},
        {"rg", 2, {wgl::kRedBits, wgl::kGreenBits}},
    };
    return words;
}

/// A word whose number, or a fixed value, goes to one attribute.
struct PlainWord
{
    const char* name;
    int attribute;
};

constexpr PlainWord kPlainWords[] = {
    {"depth", wgl::kDepthBits}, {"stencil", wgl::kStencilBits}, {"aux", wgl::kAuxBuffers}};

constexpr PlainWord kTextureWords[] = {{"texture", wgl::kTexture2D},
                                       {"textureRECT", wgl::kTextureRectangle},
                                       {"textureCUBE", wgl::kTextureCubeMap}};

class ModeParser
{
public:
    explicit ModeParser(const QByteArray& mode) : m_tokens(tokensOf(mode))
    {
        m_atiFloat = mode.contains("ati_float");
        m_float = mode.contains("float");
        m_texture = mode.contains("texture");
        m_alpha = mode.contains("alpha");
    }

    PBufferMode parse()
    {
        m_mode.bitsPerComponent = m_float ? 32 : 8;
        format(wgl::kDrawToPbuffer, 1);
        format(wgl::kSupportOpenGl, 1);
        format(wgl::kPixelType, m_atiFloat ? wgl::kTypeRgbaFloat : wgl::kTypeRgba);
        for (const Token& token : m_tokens) {
            if (!takeComponents(token) && !takePlain(token) && !takeTexture(token) && !takeSpecial(token))
                logWarning("unknown pbuffer attribute: %s\n", token.name.constData());
        }
        if (m_mode.components == 0) {
            logDebug("components not specified. assuming rgba...\n");
            for (const int attribute : componentWords()[1].attributes)
                format(attribute, m_mode.bitsPerComponent);
            m_mode.components = 4;
        }
        if (m_mode.isTexture)
            addTextureFormat();
        return m_mode;
    }

private:
    void format(int attribute, int value)
    {
        m_mode.pfAttribs.push_back(attribute);
        m_mode.pfAttribs.push_back(value);
    }
    void buffer(int attribute, int value)
    {
        m_mode.pbAttribs.push_back(attribute);
        m_mode.pbAttribs.push_back(value);
    }

    bool takeComponents(const Token& token)
    {
        for (const ComponentWord& word : componentWords()) {
            if (token.name != word.name)
                continue;
            int bits = token.number;
            if (bits < 1 || bits > kMostBits) {
                logWarning("warning : mistake in components definition (%s + %d)\n", word.name, bits);
                bits = m_mode.bitsPerComponent;
            }
            for (const int attribute : word.attributes)
                format(attribute, bits);
            if (token.name == "rgb" && m_alpha)
                format(wgl::kAlphaBits, bits);
            // Alpha joins the components before it.
            m_mode.components = token.name == "alpha" ? std::min(4, m_mode.components + 1) : word.components;
            return true;
        }
        return false;
    }

    bool takePlain(const Token& token)
    {
        for (const PlainWord& word : kPlainWords) {
            if (token.name != word.name)
                continue;
            format(word.attribute, token.number);
            if (word.attribute == wgl::kDepthBits && m_texture) {
                format(wgl::kBindToTextureDepth, 1);
                buffer(wgl::kDepthTextureFormat, wgl::kTextureDepthComponent);
            }
            return true;
        }
        return false;
    }

    bool takeTexture(const Token& token)
    {
        for (const PlainWord& word : kTextureWords) {
            if (token.name != word.name)
                continue;
            m_mode.isTexture = true;
            m_mode.textureTarget = word.attribute;
            buffer(wgl::kTextureTarget, word.attribute);
            return true;
        }
        return false;
    }

    bool takeSpecial(const Token& token)
    {
        if (token.name == "samples") {
            format(wgl::kSampleBuffers, 1);
            format(wgl::kSamples, token.number);
            m_mode.samples = token.number;
        } else if (token.name == "double") {
            format(wgl::kDoubleBuffer, 1);
        } else if (token.name == "float") {
            format(wgl::kFloatComponents, 1);
        } else if (token.name == "mipmap") {
            buffer(wgl::kMipmapTexture, 1);
        } else if (token.name != "ati_float") {
            return false;
        }
        return true;
    }

    /// How the texture of the components is bound.
    void addTextureFormat()
    {
        const int components = m_mode.components;
        if (m_float) {
            format(wgl::kBindToTextureFloatR + components - 1, 1);
            buffer(wgl::kTextureFormat, wgl::kTextureFloatR + components - 1);
        } else if (components == 3 || components == 4) {
            format(components == 3 ? wgl::kBindToTextureRgb : wgl::kBindToTextureRgba, 1);
            buffer(wgl::kTextureFormat, components == 3 ? wgl::kTextureRgb : wgl::kTextureRgba);
        } else {
            logWarning("Bad number of components (r=1,rg=2,rgb=3,rgba=4): %d\n", components);
        }
    }

    QList<Token> m_tokens;
    bool m_atiFloat = false;
    bool m_float = false;
    bool m_texture = false;
    bool m_alpha = false;
    PBufferMode m_mode;
};

} // namespace

PBufferMode parsePBufferMode(const QByteArray& mode)
{
    PBufferMode parsed;
    if (mode.isEmpty())
        parsed.pfAttribs = {wgl::kDrawToPbuffer, 1, wgl::kSupportOpenGl, 1};
    else
        parsed = ModeParser(mode).parse();
    for (std::vector<int>* list : {&parsed.pfAttribs, &parsed.pbAttribs})
        list->insert(list->end(), {0, 0});
    return parsed;
}

} // namespace tirn
