#pragma once
// A 2D texture from a tesk::Image or a PNG file. The image stays on the CPU until the first
// Bind (with a context current), then it is uploaded and the CPU copy dropped. The image's
// top row is uploaded first, so texture coordinate t = 0 addresses the top of the image.

#include <tesk/Image.h>

#include <string>

namespace plor {

enum class TextureFilter { Nearest, Linear, LinearMipmap };
enum class TextureWrap { Repeat, ClampToEdge, MirroredRepeat };

class Texture {
public:
    Texture() = default;
    explicit Texture(const tesk::Image& image);
    explicit Texture(tesk::Image&& image);
    ~Texture();
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    void SetImage(const tesk::Image& image);
    void SetImage(tesk::Image&& image);
    /// Reads a PNG; logs and returns false (keeping the previous image) when it cannot.
    bool LoadPng(const std::string& path);

    void SetFilter(TextureFilter filter);
    void SetWrap(TextureWrap wrap);

    /// Binds to texture unit `unit`, uploading first if needed. False when there is no image.
    bool Bind(unsigned int unit = 0);
    bool HasImage() const { return width_ > 0 && height_ > 0; }
    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    int GetChannels() const { return channels_; }
    unsigned int GetId() const { return id_; }

    void Release();

private:
    tesk::Image pending_;
    bool dirty_ = false;
    bool parametersDirty_ = true;
    TextureFilter filter_ = TextureFilter::Linear;
    TextureWrap wrap_ = TextureWrap::ClampToEdge;
    int width_ = 0;
    int height_ = 0;
    int channels_ = 0;
    unsigned int id_ = 0;
};

} // namespace plor
