#include "vexa/draw/TextRenderer.h"

#include "vexa/draw/RenderContext.h"

#include <plor/Gl.h>
#include <plor/Program.h>

#include <runa/rlog.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <glbinding/gl/gl.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <unordered_map>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr std::string_view kProgramName = "TEXT";
constexpr plor::ProgramFiles kProgramFiles{"text/text.vert", "text/text.frag"};
const char* const kRenderLabel = "vexa::draw::TextRenderer::RenderQueued";
const char* const kMeasureLabel = "vexa::draw::TextRenderer::MeasureWidth";

constexpr int kMinPixelSize = 1;
// Keeps the printable ASCII set of one size well inside the largest atlas.
constexpr int kMaxPixelSize = 256;
constexpr int kInitialAtlasSize = 256;
// Every GL 3.3 driver in use supports this; larger sizes would waste memory anyway.
constexpr int kMaxAtlasSize = 4096;
// Empty texels around each glyph so that linear filtering never picks up a neighbour.
constexpr int kPadding = 1;
constexpr char32_t kReplacement = 0xFFFD;

/// One corner of a glyph quad: framebuffer pixels from the viewport's top-left corner,
/// atlas texels (normalised in the shader, so the atlas may grow while quads are built) and
/// an RGBA colour.
struct TextVertex {
    float x;
    float y;
    float u;
    float v;
    std::uint8_t color[4];
};
static_assert(sizeof(TextVertex) == 20, "text vertices are uploaded as they are");

/// Decodes one code point at `i` and moves past it. Malformed input (stray continuation
/// bytes, truncated or overlong sequences, surrogates, values above U+10FFFF) gives U+FFFD
/// and skips only the bytes that belonged to the broken sequence.
char32_t DecodeUtf8(std::string_view text, std::size_t& i)
{
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) {
        ++i;
        return lead;
    }
    std::size_t length = 0;
    char32_t codePoint = 0;
    char32_t smallest = 0;
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        codePoint = lead & 0x1F;
        smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        codePoint = lead & 0x0F;
        smallest = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        codePoint = lead & 0x07;
        smallest = 0x10000;
    } else {
        ++i;
        return kReplacement;
    }
    for (std::size_t k = 1; k < length; ++k) {
        if (i + k >= text.size() || (static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) {
            i += k;
            return kReplacement;
        }
        codePoint = (codePoint << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
    }
    i += length;
    if (codePoint < smallest || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return kReplacement;
    return codePoint;
}

/// Integer pixel size of the atlas a text of `size` window pixels uses; 0 for a size that
/// cannot be drawn.
int PixelBucket(float size, float pixelScale)
{
    const float pixels = size * pixelScale;
    if (!std::isfinite(pixels) || pixels <= 0.0f)
        return 0;
    const float clamped =
        std::clamp(pixels, static_cast<float>(kMinPixelSize), static_cast<float>(kMaxPixelSize));
    return static_cast<int>(std::lround(clamped));
}

std::uint8_t ToByte(float value)
{
    if (!(value > 0.0f))
        return 0;
    if (value >= 1.0f)
        return 255;
    return static_cast<std::uint8_t>(std::lround(value * 255.0f));
}

} // namespace

struct TextRenderer::Font {
    struct Glyph {
        FT_UInt index = 0;
        float advance = 0.0f;
        int left = 0; ///< bitmap's left edge from the pen
        int top = 0;  ///< bitmap's top edge above the baseline
        int width = 0;
        int height = 0;
        int atlasX = 0;
        int atlasY = 0;
        bool loaded = false;
    };

    /// The glyphs of one pixel size on a shelf-packed single-channel canvas. The canvas stays
    /// on the CPU: new glyphs are added between uploads and growing keeps every glyph where
    /// it is.
    struct Atlas {
        int pixelSize = 0;
        float lineHeight = 0.0f;
        float unitsToPixels = 0.0f;
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> pixels;
        int penX = kPadding;
        int penY = kPadding;
        int rowHeight = 0;
        /// Changes when the canvas was cleared to make room: glyph positions read before
        /// are then stale.
        unsigned generation = 0;
        std::array<Glyph, 128> ascii{};
        std::unordered_map<char32_t, Glyph> others;

        GLuint texture = 0;
        int textureWidth = 0;
        int textureHeight = 0;
        int dirtyTop = INT_MAX;
        int dirtyBottom = 0;
        std::uint64_t frameStamp = 0;
    };

    enum class State { NotLoaded, Loaded, Failed };

    struct Range {
        Atlas* atlas;
        std::size_t first;
        std::size_t count;
    };

    FT_Library library = nullptr;
    FT_Face face = nullptr;
    State state = State::NotLoaded;
    bool warnedNoFile = false;
    int facePixelSize = 0;
    bool warnedFullAtlas = false;
    std::vector<std::unique_ptr<Atlas>> atlases;

    // Built every frame; both keep their capacity so that drawing stops allocating once the
    // largest frame was seen.
    std::vector<TextVertex> vertices;
    std::vector<Range> ranges;
    std::uint64_t frame = 0;

    GLuint vertexArray = 0;
    GLuint vertexBuffer = 0;
    std::size_t vertexBufferBytes = 0;
    unsigned int programId = 0;
    GLint locViewportSize = -1;
    GLint locAtlas = -1;

    ~Font()
    {
        ReleaseGpu();
        Unload();
    }

    void Unload()
    {
        if (face)
            FT_Done_Face(face);
        face = nullptr;
        if (library)
            FT_Done_FreeType(library);
        library = nullptr;
        facePixelSize = 0;
        for (auto& atlas : atlases)
            if (atlas->texture)
                plor::DeleteGlObject(plor::GlObjectKind::Texture, atlas->texture);
        atlases.clear();
        state = State::NotLoaded;
        warnedNoFile = false;
        warnedFullAtlas = false;
    }

    void ReleaseGpu()
    {
        for (auto& atlas : atlases) {
            if (atlas->texture)
                plor::DeleteGlObject(plor::GlObjectKind::Texture, atlas->texture);
            atlas->texture = 0;
            atlas->textureWidth = 0;
            atlas->textureHeight = 0;
        }
        if (vertexBuffer)
            plor::DeleteGlObject(plor::GlObjectKind::Buffer, vertexBuffer);
        if (vertexArray)
            plor::DeleteGlObject(plor::GlObjectKind::VertexArray, vertexArray);
        vertexBuffer = 0;
        vertexArray = 0;
        vertexBufferBytes = 0;
        programId = 0;
    }

    /// True when the face is ready. Reports a missing path or a broken file only once.
    bool EnsureLoaded(const std::string& path, const char* label)
    {
        if (state == State::Loaded)
            return true;
        if (state == State::Failed)
            return false;
        if (path.empty()) {
            if (!warnedNoFile)
                rlog::Warn("No font file was set; texts are not drawn", label);
            warnedNoFile = true;
            return false;
        }
        if (!library) {
            if (const FT_Error error = FT_Init_FreeType(&library); error != 0) {
                library = nullptr;
                rlog::Fail("Can not initialise FreeType (error " + std::to_string(error) + ")", label);
                state = State::Failed;
                return false;
            }
        }
        if (const FT_Error error = FT_New_Face(library, path.c_str(), 0, &face); error != 0) {
            face = nullptr;
            rlog::Fail("Can not load font file \"" + path + "\" (FreeType error " + std::to_string(error) +
                           ")",
                       label);
            state = State::Failed;
            return false;
        }
        if (!FT_IS_SCALABLE(face)) {
            rlog::Fail("Font file \"" + path + "\" has no scalable outlines", label);
            FT_Done_Face(face);
            face = nullptr;
            state = State::Failed;
            return false;
        }
        FT_Select_Charmap(face, FT_ENCODING_UNICODE);
        state = State::Loaded;
        return true;
    }

    Atlas& GetAtlas(int pixelSize)
    {
        for (auto& atlas : atlases)
            if (atlas->pixelSize == pixelSize)
                return *atlas;
        auto atlas = std::make_unique<Atlas>();
        atlas->pixelSize = pixelSize;
        atlas->width = kInitialAtlasSize;
        atlas->height = kInitialAtlasSize;
        atlas->pixels.assign(static_cast<std::size_t>(atlas->width) * atlas->height, 0);
        const float unitsPerEm = static_cast<float>(face->units_per_EM);
        atlas->unitsToPixels = unitsPerEm > 0.0f ? static_cast<float>(pixelSize) / unitsPerEm : 0.0f;
        atlas->lineHeight = atlas->unitsToPixels > 0.0f ? std::round(face->height * atlas->unitsToPixels)
                                                        : std::round(static_cast<float>(pixelSize) * 1.2f);
        atlases.push_back(std::move(atlas));
        Atlas& added = *atlases.back();
        for (char32_t c = 32; c < 127; ++c)
            GetGlyph(added, c);
        return added;
    }

    /// Doubles the shorter side (width first); glyphs keep their texel positions.
    bool Grow(Atlas& atlas)
    {
        if (atlas.width >= kMaxAtlasSize && atlas.height >= kMaxAtlasSize)
            return false;
        if (atlas.width <= atlas.height && atlas.width < kMaxAtlasSize) {
            const int newWidth = atlas.width * 2;
            std::vector<std::uint8_t> wider(static_cast<std::size_t>(newWidth) * atlas.height, 0);
            for (int row = 0; row < atlas.height; ++row)
                std::memcpy(wider.data() + static_cast<std::size_t>(row) * newWidth,
                            atlas.pixels.data() + static_cast<std::size_t>(row) * atlas.width,
                            static_cast<std::size_t>(atlas.width));
            atlas.pixels.swap(wider);
            atlas.width = newWidth;
        } else {
            atlas.height *= 2;
            atlas.pixels.resize(static_cast<std::size_t>(atlas.width) * atlas.height, 0);
        }
        return true;
    }

    /// Empties a canvas that cannot grow any more; glyphs come back as they are used.
    void Repack(Atlas& atlas)
    {
        std::fill(atlas.pixels.begin(), atlas.pixels.end(), std::uint8_t{0});
        atlas.penX = kPadding;
        atlas.penY = kPadding;
        atlas.rowHeight = 0;
        for (Glyph& g : atlas.ascii)
            g.loaded = false;
        atlas.others.clear();
        ++atlas.generation;
        atlas.dirtyTop = 0;
        atlas.dirtyBottom = atlas.height;
    }

    /// Finds room for a w x h bitmap; false when even an emptied canvas has none.
    bool Place(Atlas& atlas, int w, int h, int& x, int& y)
    {
        for (int attempt = 0; attempt < 64; ++attempt) {
            if (atlas.penX + w + kPadding > atlas.width) {
                if (atlas.penX > kPadding) {
                    atlas.penY += atlas.rowHeight + kPadding;
                    atlas.penX = kPadding;
                    atlas.rowHeight = 0;
                }
                if (w + 2 * kPadding > atlas.width) {
                    if (!Grow(atlas))
                        return false;
                    continue;
                }
            }
            if (atlas.penY + h + kPadding > atlas.height) {
                if (Grow(atlas))
                    continue;
                if (atlas.penX == kPadding && atlas.penY == kPadding)
                    return false;
                Repack(atlas);
                continue;
            }
            x = atlas.penX;
            y = atlas.penY;
            atlas.penX += w + kPadding;
            atlas.rowHeight = std::max(atlas.rowHeight, h);
            return true;
        }
        return false;
    }

    /// The glyph of `codePoint` at the atlas's size, rasterised on first use. Null only when
    /// the font is not loaded.
    const Glyph* GetGlyph(Atlas& atlas, char32_t codePoint)
    {
        if (!face)
            return nullptr;
        Glyph* slot = nullptr;
        if (codePoint < atlas.ascii.size()) {
            slot = &atlas.ascii[codePoint];
            if (slot->loaded)
                return slot;
        } else {
            auto found = atlas.others.find(codePoint);
            if (found != atlas.others.end())
                return &found->second;
        }

        Glyph glyph;
        glyph.loaded = true;
        if (facePixelSize != atlas.pixelSize) {
            FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(atlas.pixelSize));
            facePixelSize = atlas.pixelSize;
        }
        // Index 0 is the font's "missing glyph" box, which is what a reader should see.
        glyph.index = FT_Get_Char_Index(face, codePoint);
        if (FT_Load_Glyph(face, glyph.index, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT) == 0) {
            const FT_GlyphSlot ft = face->glyph;
            const FT_Bitmap& bitmap = ft->bitmap;
            glyph.advance = static_cast<float>(ft->advance.x) / 64.0f;
            glyph.left = ft->bitmap_left;
            glyph.top = ft->bitmap_top;
            const bool supported =
                bitmap.pixel_mode == FT_PIXEL_MODE_GRAY || bitmap.pixel_mode == FT_PIXEL_MODE_MONO;
            const int w = static_cast<int>(bitmap.width);
            const int h = static_cast<int>(bitmap.rows);
            if (supported && w > 0 && h > 0) {
                int x = 0;
                int y = 0;
                if (Place(atlas, w, h, x, y)) {
                    CopyBitmap(atlas, bitmap, x, y);
                    glyph.width = w;
                    glyph.height = h;
                    glyph.atlasX = x;
                    glyph.atlasY = y;
                } else if (!warnedFullAtlas) {
                    warnedFullAtlas = true;
                    rlog::Warn("Glyph atlas of size " + std::to_string(atlas.pixelSize) +
                                   " px is full; some characters are not drawn",
                               "vexa::draw::TextRenderer::Font::GetGlyph");
                }
            }
        }

        if (slot) {
            *slot = glyph;
            return slot;
        }
        return &atlas.others.emplace(codePoint, glyph).first->second;
    }

    static void CopyBitmap(Atlas& atlas, const FT_Bitmap& bitmap, int x, int y)
    {
        const int w = static_cast<int>(bitmap.width);
        const int h = static_cast<int>(bitmap.rows);
        const int pitch = bitmap.pitch;
        for (int row = 0; row < h; ++row) {
            // A negative pitch stores the rows bottom-up.
            const unsigned char* source =
                pitch >= 0 ? bitmap.buffer + static_cast<std::ptrdiff_t>(row) * pitch
                           : bitmap.buffer + static_cast<std::ptrdiff_t>(h - 1 - row) * -pitch;
            std::uint8_t* target = atlas.pixels.data() + static_cast<std::size_t>(y + row) * atlas.width + x;
            if (bitmap.pixel_mode == FT_PIXEL_MODE_GRAY) {
                const int levels = std::max(1, static_cast<int>(bitmap.num_grays) - 1);
                for (int col = 0; col < w; ++col)
                    target[col] = static_cast<std::uint8_t>(source[col] * 255 / levels);
            } else {
                for (int col = 0; col < w; ++col)
                    target[col] = (source[col >> 3] & (0x80 >> (col & 7))) ? 255 : 0;
            }
        }
        atlas.dirtyTop = std::min(atlas.dirtyTop, y);
        atlas.dirtyBottom = std::max(atlas.dirtyBottom, y + h);
    }

    float Kerning(const Atlas& atlas, FT_UInt previous, FT_UInt current) const
    {
        if (previous == 0 || current == 0 || !FT_HAS_KERNING(face) || atlas.unitsToPixels <= 0.0f)
            return 0.0f;
        // Unscaled values avoid switching the face's size between atlases.
        FT_Vector delta{0, 0};
        if (FT_Get_Kerning(face, previous, current, FT_KERNING_UNSCALED, &delta) != 0)
            return 0.0f;
        return static_cast<float>(delta.x) * atlas.unitsToPixels;
    }

    /// Advance width of text[begin, end), which holds no line break.
    float MeasureLine(Atlas& atlas, std::string_view text, std::size_t begin, std::size_t end)
    {
        float width = 0.0f;
        FT_UInt previous = 0;
        for (std::size_t i = begin; i < end;) {
            const char32_t c = DecodeUtf8(text.substr(0, end), i);
            if (c < 32)
                continue;
            const Glyph* g = GetGlyph(atlas, c);
            if (!g)
                return 0.0f;
            width += Kerning(atlas, previous, g->index) + g->advance;
            previous = g->index;
        }
        return width;
    }

    float MeasureWidest(Atlas& atlas, std::string_view text)
    {
        float widest = 0.0f;
        std::size_t begin = 0;
        while (begin <= text.size()) {
            std::size_t end = text.find('\n', begin);
            if (end == std::string_view::npos)
                end = text.size();
            widest = std::max(widest, MeasureLine(atlas, text, begin, end));
            begin = end + 1;
        }
        return widest;
    }

    void AppendEntry(Atlas& atlas, const Entry& entry, float pixelScale)
    {
        const std::string_view text = entry.text;
        const float anchorX = entry.position.x * pixelScale;
        float baseline = std::round(entry.position.y * pixelScale);
        const TextVertex corner{0.0f,
                                0.0f,
                                0.0f,
                                0.0f,
                                {ToByte(entry.color.r), ToByte(entry.color.g), ToByte(entry.color.b), 255}};

        std::size_t begin = 0;
        while (begin <= text.size()) {
            std::size_t end = text.find('\n', begin);
            if (end == std::string_view::npos)
                end = text.size();

            float pen = anchorX;
            if (entry.alignment != TextAlignment::Left) {
                const float width = MeasureLine(atlas, text, begin, end);
                pen -= entry.alignment == TextAlignment::Right ? width : 0.5f * width;
            }
            // Whole-pixel pen positions keep glyph texels on framebuffer pixels: crisp text.
            pen = std::round(pen);

            FT_UInt previous = 0;
            for (std::size_t i = begin; i < end;) {
                const char32_t c = DecodeUtf8(text.substr(0, end), i);
                if (c < 32)
                    continue;
                const Glyph* g = GetGlyph(atlas, c);
                if (!g)
                    return;
                pen += Kerning(atlas, previous, g->index);
                previous = g->index;
                if (g->width > 0) {
                    const float x0 = std::round(pen) + static_cast<float>(g->left);
                    const float y0 = baseline - static_cast<float>(g->top);
                    const float x1 = x0 + static_cast<float>(g->width);
                    const float y1 = y0 + static_cast<float>(g->height);
                    const float u0 = static_cast<float>(g->atlasX);
                    const float v0 = static_cast<float>(g->atlasY);
                    const float u1 = u0 + static_cast<float>(g->width);
                    const float v1 = v0 + static_cast<float>(g->height);
                    TextVertex v = corner;
                    auto put = [&](float x, float y, float u, float w) {
                        v.x = x;
                        v.y = y;
                        v.u = u;
                        v.v = w;
                        vertices.push_back(v);
                    };
                    put(x0, y0, u0, v0);
                    put(x0, y1, u0, v1);
                    put(x1, y1, u1, v1);
                    put(x0, y0, u0, v0);
                    put(x1, y1, u1, v1);
                    put(x1, y0, u1, v0);
                }
                pen += g->advance;
            }
            baseline += atlas.lineHeight;
            begin = end + 1;
        }
    }

    /// Brings the atlas's texture up to date with its canvas; leaves it bound.
    void UploadAtlas(Atlas& atlas)
    {
        if (atlas.texture == 0) {
            glGenTextures(1, &atlas.texture);
            glBindTexture(GL_TEXTURE_2D, atlas.texture);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(GL_LINEAR));
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, static_cast<GLint>(GL_LINEAR));
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, static_cast<GLint>(GL_CLAMP_TO_EDGE));
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, static_cast<GLint>(GL_CLAMP_TO_EDGE));
            atlas.textureWidth = 0;
            atlas.textureHeight = 0;
        } else {
            glBindTexture(GL_TEXTURE_2D, atlas.texture);
        }

        const bool resized = atlas.textureWidth != atlas.width || atlas.textureHeight != atlas.height;
        if (!resized && atlas.dirtyTop >= atlas.dirtyBottom)
            return;
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        if (resized) {
            glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(GL_R8), atlas.width, atlas.height, 0, GL_RED,
                         GL_UNSIGNED_BYTE, atlas.pixels.data());
            atlas.textureWidth = atlas.width;
            atlas.textureHeight = atlas.height;
        } else {
            glTexSubImage2D(GL_TEXTURE_2D, 0, 0, atlas.dirtyTop, atlas.width,
                            atlas.dirtyBottom - atlas.dirtyTop, GL_RED, GL_UNSIGNED_BYTE,
                            atlas.pixels.data() + static_cast<std::size_t>(atlas.dirtyTop) * atlas.width);
        }
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        atlas.dirtyTop = INT_MAX;
        atlas.dirtyBottom = 0;
    }

    void UploadVertices()
    {
        if (vertexArray == 0) {
            glGenVertexArrays(1, &vertexArray);
            glGenBuffers(1, &vertexBuffer);
            glBindVertexArray(vertexArray);
            glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
            const auto stride = static_cast<GLsizei>(sizeof(TextVertex));
            glEnableVertexAttribArray(0);
            glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<const void*>(0));
            glEnableVertexAttribArray(1);
            glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, stride,
                                  reinterpret_cast<const void*>(offsetof(TextVertex, u)));
            glEnableVertexAttribArray(2);
            glVertexAttribPointer(2, 4, GL_UNSIGNED_BYTE, GL_TRUE, stride,
                                  reinterpret_cast<const void*>(offsetof(TextVertex, color)));
            vertexBufferBytes = 0;
        } else {
            glBindVertexArray(vertexArray);
            glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
        }
        const std::size_t bytes = vertices.size() * sizeof(TextVertex);
        if (bytes > vertexBufferBytes) {
            const std::size_t capacity = std::max({bytes, vertexBufferBytes * 2, std::size_t{16384}});
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(capacity), nullptr, GL_STREAM_DRAW);
            vertexBufferBytes = capacity;
        }
        glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(bytes), vertices.data());
    }
};

TextRenderer::TextRenderer() : font_(std::make_unique<Font>()) {}

TextRenderer::~TextRenderer() = default;

void TextRenderer::SetFontFile(const std::string& path)
{
    if (path == fontFile_)
        return;
    fontFile_ = path;
    // The new file is read at the next use, and may report its own failure.
    font_->Unload();
}

void TextRenderer::Print(const std::string& text, float x, float y)
{
    if (!scene_ || text.empty())
        return;
    if (!std::isfinite(x) || !std::isfinite(y) || PixelBucket(size_, 1.0f) == 0) {
        rlog::Warn("Text \"" + text + "\" has a non-finite position or an invalid size " +
                       std::to_string(size_),
                   "vexa::draw::TextRenderer::Print");
        return;
    }
    std::string stored;
    if (!spareTexts_.empty()) {
        stored = std::move(spareTexts_.back());
        spareTexts_.pop_back();
    }
    stored.assign(text);
    queue_.push_back(Entry{scene_, std::move(stored), glm::vec2(x, y), alignment_, color_, size_});
}

float TextRenderer::MeasureWidth(const std::string& text)
{
    const int pixelSize = PixelBucket(size_, 1.0f);
    if (text.empty() || pixelSize == 0 || !font_->EnsureLoaded(fontFile_, kMeasureLabel))
        return 0.0f;
    return font_->MeasureWidest(font_->GetAtlas(pixelSize), text);
}

void TextRenderer::Forget(const Scene* scene)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < queue_.size(); ++i) {
        if (queue_[i].scene == scene) {
            spareTexts_.push_back(std::move(queue_[i].text));
            continue;
        }
        if (kept != i)
            queue_[kept] = std::move(queue_[i]);
        ++kept;
    }
    queue_.erase(queue_.begin() + static_cast<std::ptrdiff_t>(kept), queue_.end());
}

void TextRenderer::Clear()
{
    for (Entry& entry : queue_)
        spareTexts_.push_back(std::move(entry.text));
    queue_.clear();
}

void TextRenderer::RenderQueued(const RenderContext& context)
{
    const Scene* scene = context.scene;
    if (std::none_of(queue_.begin(), queue_.end(), [scene](const Entry& e) { return e.scene == scene; }))
        return;

    Font& font = *font_;
    const float pixelScale =
        std::isfinite(context.pixelScale) && context.pixelScale > 0.0f ? context.pixelScale : 1.0f;
    const bool drawable = context.programs && context.glViewport.z > 0 && context.glViewport.w > 0;
    if (!drawable || !font.EnsureLoaded(fontFile_, kRenderLabel)) {
        Forget(scene);
        return;
    }

    // Texts are grouped by atlas so that each atlas costs one draw call.
    ++font.frame;
    for (const Entry& entry : queue_)
        if (const int pixelSize = PixelBucket(entry.size, pixelScale); entry.scene == scene && pixelSize > 0)
            font.GetAtlas(pixelSize).frameStamp = font.frame;

    font.vertices.clear();
    font.ranges.clear();
    for (auto& atlasPointer : font.atlases) {
        Font::Atlas& atlas = *atlasPointer;
        if (atlas.frameStamp != font.frame)
            continue;
        const std::size_t first = font.vertices.size();
        // Making room may empty the atlas halfway; the texts are then laid out again on the
        // fresh canvas, which holds one frame's glyphs.
        for (int attempt = 0; attempt < 2; ++attempt) {
            const unsigned generation = atlas.generation;
            font.vertices.resize(first);
            for (const Entry& entry : queue_)
                if (entry.scene == scene && PixelBucket(entry.size, pixelScale) == atlas.pixelSize)
                    font.AppendEntry(atlas, entry, pixelScale);
            if (atlas.generation == generation)
                break;
        }
        if (font.vertices.size() > first)
            font.ranges.push_back(Font::Range{&atlas, first, font.vertices.size() - first});
    }
    Forget(scene);
    if (font.ranges.empty())
        return;

    plor::Program* program = &context.programs->GetOrAdd(kProgramName, kProgramFiles);
    if (!program->Use())
        return;
    if (font.programId != program->GetId()) {
        font.programId = program->GetId();
        font.locViewportSize = glGetUniformLocation(font.programId, "uViewportSize");
        font.locAtlas = glGetUniformLocation(font.programId, "uAtlas");
    }

    const glm::ivec4& viewport = context.glViewport;
    glViewport(viewport.x, viewport.y, viewport.z, viewport.w);
    glUniform2f(font.locViewportSize, static_cast<float>(viewport.z), static_cast<float>(viewport.w));
    glUniform1i(font.locAtlas, 0);

    const bool depthWasOn = glIsEnabled(GL_DEPTH_TEST) == GL_TRUE;
    const bool blendWasOn = glIsEnabled(GL_BLEND) == GL_TRUE;
    const bool cullWasOn = glIsEnabled(GL_CULL_FACE) == GL_TRUE;
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glActiveTexture(GL_TEXTURE0);

    font.UploadVertices();
    for (const Font::Range& range : font.ranges) {
        font.UploadAtlas(*range.atlas);
        glDrawArrays(GL_TRIANGLES, static_cast<GLint>(range.first), static_cast<GLsizei>(range.count));
    }
    glBindVertexArray(0);
    glBindTexture(GL_TEXTURE_2D, 0);

    if (depthWasOn)
        glEnable(GL_DEPTH_TEST);
    if (!blendWasOn)
        glDisable(GL_BLEND);
    if (cullWasOn)
        glEnable(GL_CULL_FACE);
}

void TextRenderer::ReleaseGpuResources()
{
    font_->ReleaseGpu();
}

} // namespace vexa::draw
