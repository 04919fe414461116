#include <plor/Texture.h>

#include <plor/Gl.h>

#include "GlContext.h"

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <array>

using namespace gl;

namespace plor {

namespace {

GLint ToGlFilter(TextureFilter filter, bool minifying)
{
    switch (filter) {
    case TextureFilter::Nearest:
        return static_cast<GLint>(GL_NEAREST);
    case TextureFilter::Linear:
        return static_cast<GLint>(GL_LINEAR);
    case TextureFilter::LinearMipmap:
        return static_cast<GLint>(minifying ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    }
    return static_cast<GLint>(GL_LINEAR);
}

GLint ToGlWrap(TextureWrap wrap)
{
    switch (wrap) {
    case TextureWrap::Repeat:
        return static_cast<GLint>(GL_REPEAT);
    case TextureWrap::ClampToEdge:
        return static_cast<GLint>(GL_CLAMP_TO_EDGE);
    case TextureWrap::MirroredRepeat:
        return static_cast<GLint>(GL_MIRRORED_REPEAT);
    }
    return static_cast<GLint>(GL_CLAMP_TO_EDGE);
}

} // namespace

Texture::Texture(const tesk::Image& image)
{
    SetImage(image);
}

Texture::Texture(tesk::Image&& image)
{
    SetImage(std::move(image));
}

Texture::~Texture()
{
    Release();
}

void Texture::SetImage(const tesk::Image& image)
{
    SetImage(tesk::Image(image));
}

void Texture::SetImage(tesk::Image&& image)
{
    pending_ = std::move(image);
    width_ = static_cast<int>(pending_.GetWidth());
    height_ = static_cast<int>(pending_.GetHeight());
    channels_ = pending_.IsEmpty() ? 0 : pending_.GetChannels();
    if (pending_.IsEmpty()) {
        width_ = 0;
        height_ = 0;
    }
    dirty_ = !pending_.IsEmpty();
}

bool Texture::LoadPng(const std::string& path)
{
    tesk::Image image;
    if (!image.LoadPng(path)) {
        rlog::Fail("Cannot load the texture '" + path + "'; keeping the previous image",
                   "plor::Texture::LoadPng");
        return false;
    }
    SetImage(std::move(image));
    return true;
}

void Texture::SetFilter(TextureFilter filter)
{
    if (filter != filter_) {
        filter_ = filter;
        parametersDirty_ = true;
    }
}

void Texture::SetWrap(TextureWrap wrap)
{
    if (wrap != wrap_) {
        wrap_ = wrap;
        parametersDirty_ = true;
    }
}

bool Texture::Bind(unsigned int unit)
{
    if (!HasImage())
        return false;
    if (!detail::HasCurrentContext()) {
        rlog::Fail("No OpenGL context is current", "plor::Texture::Bind");
        return false;
    }
    glActiveTexture(static_cast<GLenum>(static_cast<unsigned int>(GL_TEXTURE0) + unit));
    if (id_ == 0)
        glGenTextures(1, &id_);
    glBindTexture(GL_TEXTURE_2D, id_);

    if (dirty_) {
        static constexpr std::array<GLenum, 4> kBytes = {GL_R8, GL_RG8, GL_RGB8, GL_RGBA8};
        static constexpr std::array<GLenum, 4> kFloats = {GL_R32F, GL_RG32F, GL_RGB32F, GL_RGBA32F};
        static constexpr std::array<GLenum, 4> kLayouts = {GL_RED, GL_RG, GL_RGB, GL_RGBA};
        const bool isFloat = pending_.GetFormat() == tesk::PixelFormat::Float32;
        const auto index = static_cast<std::size_t>(channels_ - 1);
        // Rows of 1- to 3-channel 8-bit images are not 4-byte aligned in general.
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(isFloat ? kFloats[index] : kBytes[index]), width_,
                     height_, 0, kLayouts[index], isFloat ? GL_FLOAT : GL_UNSIGNED_BYTE, pending_.Data());
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);

        // Gray images sample as gray, gray + alpha as gray with alpha.
        if (channels_ <= 2) {
            const GLint alpha = static_cast<GLint>(channels_ == 2 ? GL_GREEN : GL_ONE);
            const std::array<GLint, 4> swizzle = {static_cast<GLint>(GL_RED), static_cast<GLint>(GL_RED),
                                                  static_cast<GLint>(GL_RED), alpha};
            glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, swizzle.data());
        }
        pending_ = tesk::Image();
        dirty_ = false;
        // Mipmaps are derived from the new level 0.
        parametersDirty_ = true;
    }

    if (parametersDirty_) {
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, ToGlFilter(filter_, true));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, ToGlFilter(filter_, false));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, ToGlWrap(wrap_));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, ToGlWrap(wrap_));
        if (filter_ == TextureFilter::LinearMipmap)
            glGenerateMipmap(GL_TEXTURE_2D);
        parametersDirty_ = false;
    }
    return true;
}

void Texture::Release()
{
    DeleteGlObject(GlObjectKind::Texture, id_);
    id_ = 0;
    pending_ = tesk::Image();
    dirty_ = false;
    parametersDirty_ = true;
    width_ = 0;
    height_ = 0;
    channels_ = 0;
}

} // namespace plor
