#pragma once
// Screen text in the Inria Sans face, rasterised with FreeType into a glyph atlas. Gadgets
// print during a frame's text phase; the texts are drawn over their scene and forgotten.

#include <tesk/Color.h>

#include <glm/vec2.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vexa::draw {

class Scene;
struct RenderContext;

enum class TextAlignment { Left = 0, Center = 1, Right = 2 };

class TextRenderer {
public:
    TextRenderer();
    ~TextRenderer();
    TextRenderer(const TextRenderer&) = delete;
    TextRenderer& operator=(const TextRenderer&) = delete;

    /// The TTF file to use; read at the first draw. A missing or broken file is logged once
    /// and texts are then skipped.
    void SetFontFile(const std::string& path);
    const std::string& GetFontFile() const { return fontFile_; }

    /// Texts printed from now on belong to this scene (null: printing is ignored).
    void SetScene(const Scene* scene) { scene_ = scene; }
    const Scene* GetScene() const { return scene_; }

    void SetAlignment(TextAlignment alignment) { alignment_ = alignment; }
    TextAlignment GetAlignment() const { return alignment_; }
    void SetColor(const tesk::Color3f& color) { color_ = color; }
    const tesk::Color3f& GetColor() const { return color_; }
    /// Pixel height of the text (em size).
    void SetSize(float pixels) { size_ = pixels; }
    float GetSize() const { return size_; }

    /// Queues UTF-8 text with its baseline's anchor at (x, y) in the scene's viewport pixels
    /// (origin top-left); the alignment decides whether x is the left end, centre or right
    /// end. Several lines are separated by '\n'.
    void Print(const std::string& text, float x, float y);

    /// Width in pixels of the widest line at the current size (needs the font; 0 without).
    /// Loads the font on the CPU if needed, so it works without a GL context.
    float MeasureWidth(const std::string& text);

    /// Draws and forgets the texts queued for `context.scene`. Called by the render system.
    void RenderQueued(const RenderContext& context);
    /// Forgets every queued text.
    void Clear();
    std::size_t GetQueuedCount() const { return queue_.size(); }

    void ReleaseGpuResources();

private:
    struct Entry {
        const Scene* scene;
        std::string text;
        glm::vec2 position;
        TextAlignment alignment;
        tesk::Color3f color;
        float size;
    };
    /// The FreeType face, the glyph atlases (one per pixel size) and the GL objects.
    struct Font;

    /// Moves the texts of `scene` out of the queue, keeping their strings for reuse.
    void Forget(const Scene* scene);

    std::string fontFile_;
    const Scene* scene_ = nullptr;
    TextAlignment alignment_ = TextAlignment::Left;
    tesk::Color3f color_{1.0f, 1.0f, 1.0f};
    float size_ = 16.0f;
    std::vector<Entry> queue_;
    /// Strings of drawn texts, reused by Print so that printing the same texts every frame
    /// stops allocating after the first frames.
    std::vector<std::string> spareTexts_;
    std::unique_ptr<Font> font_;
};

} // namespace vexa::draw
