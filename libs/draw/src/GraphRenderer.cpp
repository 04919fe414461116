#include "vexa/draw/GraphRenderer.h"

#include "vexa/draw/RenderContext.h"
#include "vexa/draw/RenderSystem.h"
#include "vexa/draw/TextRenderer.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>
#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

using namespace gl;

namespace vexa::draw {

namespace {

/// The wide-line program of line fields draws the polyline, frame and axes as well.
constexpr std::string_view kLineProgram = "LINE_FIELD";
constexpr plor::ProgramFiles kLineFiles{"lines/lineField.vert", "lines/lineField.frag",
                                        "lines/lineField.geom"};
constexpr std::string_view kPointProgram = "GRAPH_POINTS";
constexpr plor::ProgramFiles kPointFiles{"graph/points.vert", "graph/points.frag"};

/// Share of the data's span added on both sides of each axis.
constexpr double kRangeMargin = 0.05;
/// Space around the plot in window pixels, plus room for the x labels under it.
constexpr float kPlotMargin = 8.0f;
constexpr float kLabelSize = 11.0f;
constexpr float kLabelRoom = 14.0f;
/// Below this plot size (window pixels) the frame and labels would only clutter.
constexpr float kMinPlotSize = 24.0f;

bool IsFinite(const glm::vec2& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

/// The shown range of one axis from its data bounds.
void RangeOf(double low, double high, double& rangeLow, double& rangeHigh)
{
    const double span = high - low;
    if (span > 0.0) {
        rangeLow = low - kRangeMargin * span;
        rangeHigh = high + kRangeMargin * span;
        return;
    }
    // A constant: one unit around it, or more where one unit is below the value's precision.
    double half = 0.5;
    if (low + half == low || low - half == low)
        half = std::abs(low) * 0.5;
    rangeLow = low - half;
    rangeHigh = low + half;
}

/// Tick marks reach this far into the plot from the frame, in window pixels.
constexpr float kTickLength = 5.0f;
/// Ticks are refused when they would come closer than this share of the wanted spacing.
constexpr double kMinSpacingShare = 0.6;
/// Grid lines in this share of the frame colour: present, but behind the data.
constexpr float kGridShade = 0.55f;

/// The exponent k of a step m * 10^k (m = 1, 2 or 5).
int StepExponent(double step)
{
    return static_cast<int>(std::floor(std::log10(step) + 1e-9));
}

float Sanitised(float scale)
{
    return std::isfinite(scale) && scale > 0.0f ? scale : 1.0f;
}

} // namespace

struct GraphRenderer::Gpu {
    /// Points in the unit square of the ranges, two floats each.
    plor::ArrayObject points;
    /// Frame and zero axes as segments in the same space.
    plor::ArrayObject decoration;

    unsigned int lineProgramId = 0;
    GLint locLineMatrix = -1;
    GLint locLineColor = -1;
    GLint locUseVertexColor = -1;
    GLint locLineWidth = -1;
    GLint locViewportSize = -1;

    unsigned int pointProgramId = 0;
    GLint locPointMatrix = -1;
    GLint locPointSize = -1;
    GLint locPointColor = -1;
};

GraphRenderer::GraphRenderer() : gpu_(std::make_unique<Gpu>()) {}

GraphRenderer::GraphRenderer(std::span<const glm::vec2> points) : GraphRenderer()
{
    SetPoints(points);
}

GraphRenderer::~GraphRenderer()
{
    ReleaseGpuResources();
}

void GraphRenderer::SetPoints(std::span<const glm::vec2> points)
{
    Gpu& gpu = *gpu_;
    runs_.clear();
    pointCount_ = 0;
    gridVertexCount_ = frameVertexCount_ = axisVertexCount_ = 0;
    laidOutFor_ = glm::vec2(-1.0f);
    xTicks_ = yTicks_ = AxisTicks{};
    xLabels_.clear();
    yLabels_.clear();

    glm::vec2 low(std::numeric_limits<float>::max());
    glm::vec2 high(std::numeric_limits<float>::lowest());
    for (const glm::vec2& p : points) {
        if (!IsFinite(p))
            continue;
        low = glm::min(low, p);
        high = glm::max(high, p);
        ++pointCount_;
    }

    if (pointCount_ == 0) {
        gpu.points.Release();
        gpu.decoration.Release();
        dataMin_ = dataMax_ = glm::vec2(0.0f);
        rangeMin_ = glm::dvec2(0.0);
        rangeMax_ = glm::dvec2(1.0);
        return;
    }

    dataMin_ = low;
    dataMax_ = high;
    RangeOf(low.x, high.x, rangeMin_.x, rangeMax_.x);
    RangeOf(low.y, high.y, rangeMin_.y, rangeMax_.y);
    const glm::dvec2 span = rangeMax_ - rangeMin_;

    // Positions are uploaded relative to the ranges (in double precision), so data far from
    // the origin or with a tiny spread keeps its shape in the GPU's floats.
    std::vector<std::byte> bytes(pointCount_ * sizeof(glm::vec2));
    std::byte* out = bytes.data();
    std::uint32_t kept = 0;
    std::uint32_t runStart = 0;
    auto closeRun = [&]() {
        if (kept - runStart >= 2)
            runs_.push_back({runStart, kept - runStart});
        runStart = kept;
    };
    for (const glm::vec2& p : points) {
        if (!IsFinite(p)) {
            closeRun();
            continue;
        }
        const glm::vec2 unit(static_cast<float>((p.x - rangeMin_.x) / span.x),
                             static_cast<float>((p.y - rangeMin_.y) / span.y));
        std::memcpy(out, &unit, sizeof(unit));
        out += sizeof(unit);
        ++kept;
    }
    closeRun();

    gpu.points.SetBuffer(0, std::move(bytes), {plor::Attribute{0, 2, plor::DataType::Float}});
    gpu.points.SetVertexCount(pointCount_);
    // Ticks, labels and decoration follow at the first Render, which knows the plot's size.
}

GraphRenderer::AxisTicks GraphRenderer::ChooseTicks(double low, double high, float pixels, float spacing)
{
    const double span = high - low;
    if (!std::isfinite(low) || !std::isfinite(high) || !(span > 0.0) || !std::isfinite(span) ||
        !(pixels > 0.0f) || !(spacing > 0.0f))
        return {};
    const double wanted =
        std::clamp(std::floor(static_cast<double>(pixels) / spacing), 2.0, double(kMaxTicks));
    const int exponent = static_cast<int>(std::floor(std::log10(span / wanted)));

    AxisTicks best;
    double bestScore = std::numeric_limits<double>::max();
    // The nice steps around span / wanted; the largest one is the fallback on a cramped axis.
    for (int k = exponent - 1; k <= exponent + 1; ++k)
        for (double mantissa : {1.0, 2.0, 5.0}) {
            const double step = mantissa * std::pow(10.0, k);
            // A step lost in the values' precision cannot place distinct ticks.
            if (!(step > 0.0) || low + step == low || high - step == high)
                continue;
            const double firstIndex = std::ceil(low / step - 1e-9);
            const double lastIndex = std::floor(high / step + 1e-9);
            const double count = lastIndex - firstIndex + 1.0;
            if (count < 1.0 || count > kMaxTicks)
                continue;
            const double stepPixels = step / span * pixels;
            // Too close for their labels counts against a step as much as a missing tick.
            const double crowding = stepPixels < kMinSpacingShare * spacing ? kMaxTicks : 0.0;
            const double score = std::abs(count - wanted) + crowding;
            // Ties go to the larger step (visited later): fewer, roomier labels.
            if (score <= bestScore) {
                bestScore = score;
                best = {firstIndex * step, step, static_cast<int>(count)};
            }
        }
    return best;
}

std::string GraphRenderer::FormatTick(double value, const AxisTicks& ticks)
{
    if (ticks.count <= 0 || !(ticks.step > 0.0) || !std::isfinite(value))
        return {};
    // Multiples of the step that land on zero may carry a sign or a rounding residue.
    if (std::abs(value) < ticks.step * 1e-6)
        return "0";
    const int stepExponent = StepExponent(ticks.step);
    const double largest = std::max(std::abs(ticks.first), std::abs(ticks.At(ticks.count - 1)));
    char text[48];
    if (largest >= 1e6 || stepExponent < -4) {
        const auto valueExponent = static_cast<int>(std::floor(std::log10(std::abs(value)) + 1e-9));
        const int digits = std::clamp(valueExponent - stepExponent, 0, 16);
        std::snprintf(text, sizeof(text), "%.*e", digits, value);
    } else {
        std::snprintf(text, sizeof(text), "%.*f", std::max(0, -stepExponent), value);
    }
    return text;
}

void GraphRenderer::LayOutTicks(const glm::vec2& plotSize)
{
    laidOutFor_ = plotSize;
    xTicks_ = ChooseTicks(rangeMin_.x, rangeMax_.x, plotSize.x, kTickSpacingX);
    yTicks_ = ChooseTicks(rangeMin_.y, rangeMax_.y, plotSize.y, kTickSpacingY);
    // Assigned in place: the strings keep their buffers across resizes.
    xLabels_.resize(static_cast<std::size_t>(xTicks_.count));
    for (int i = 0; i < xTicks_.count; ++i)
        xLabels_[static_cast<std::size_t>(i)] = FormatTick(xTicks_.At(i), xTicks_);
    yLabels_.resize(static_cast<std::size_t>(yTicks_.count));
    for (int i = 0; i < yTicks_.count; ++i)
        yLabels_[static_cast<std::size_t>(i)] = FormatTick(yTicks_.At(i), yTicks_);
    BuildDecoration(plotSize);
}

void GraphRenderer::BuildDecoration(const glm::vec2& plotSize)
{
    const glm::dvec2 span = rangeMax_ - rangeMin_;
    auto u = [&](double x) { return static_cast<float>((x - rangeMin_.x) / span.x); };
    auto v = [&](double y) { return static_cast<float>((y - rangeMin_.y) / span.y); };
    std::vector<glm::vec2> segments;
    segments.reserve(static_cast<std::size_t>(4 * (xTicks_.count + yTicks_.count) + 12));

    for (int i = 0; i < xTicks_.count; ++i)
        segments.insert(segments.end(), {{u(xTicks_.At(i)), 0.0f}, {u(xTicks_.At(i)), 1.0f}});
    for (int i = 0; i < yTicks_.count; ++i)
        segments.insert(segments.end(), {{0.0f, v(yTicks_.At(i))}, {1.0f, v(yTicks_.At(i))}});
    gridVertexCount_ = segments.size();

    segments.insert(segments.end(), {{0.0f, 0.0f},
                                     {1.0f, 0.0f},
                                     {1.0f, 0.0f},
                                     {1.0f, 1.0f},
                                     {1.0f, 1.0f},
                                     {0.0f, 1.0f},
                                     {0.0f, 1.0f},
                                     {0.0f, 0.0f}});
    // Tick marks stand inside the frame, where they cannot run into the labels under it.
    const glm::vec2 mark = kTickLength / glm::max(plotSize, glm::vec2(1.0f));
    for (int i = 0; i < xTicks_.count; ++i)
        segments.insert(segments.end(), {{u(xTicks_.At(i)), 0.0f}, {u(xTicks_.At(i)), mark.y}});
    for (int i = 0; i < yTicks_.count; ++i)
        segments.insert(segments.end(), {{0.0f, v(yTicks_.At(i))}, {mark.x, v(yTicks_.At(i))}});
    frameVertexCount_ = segments.size() - gridVertexCount_;

    // Zero axes only where zero lies strictly inside a range; on the frame they add nothing.
    if (rangeMin_.y < 0.0 && rangeMax_.y > 0.0)
        segments.insert(segments.end(), {{0.0f, v(0.0)}, {1.0f, v(0.0)}});
    if (rangeMin_.x < 0.0 && rangeMax_.x > 0.0)
        segments.insert(segments.end(), {{u(0.0), 0.0f}, {u(0.0), 1.0f}});
    axisVertexCount_ = segments.size() - gridVertexCount_ - frameVertexCount_;
    gpu_->decoration.SetBuffer(0, plor::AsBytes(segments), {plor::Attribute{0, 2, plor::DataType::Float}});
    gpu_->decoration.SetVertexCount(segments.size());
}

bool GraphRenderer::IsCompatibileWithStyle(const Style& style) const
{
    return dynamic_cast<const GraphStyle*>(&style) != nullptr;
}

void GraphRenderer::Render(const RenderContext& context, const Style& style)
{
    const auto* graphStyle = dynamic_cast<const GraphStyle*>(&style);
    if (!graphStyle || !graphStyle->visible || pointCount_ == 0 || !context.programs)
        return;
    const glm::vec2 view(static_cast<float>(context.glViewport.z), static_cast<float>(context.glViewport.w));
    if (view.x <= 0.0f || view.y <= 0.0f)
        return;
    const float scale = Sanitised(context.pixelScale);
    const bool withLabels = context.system != nullptr && context.scene != nullptr;

    // Plot area in framebuffer pixels from the viewport's bottom-left corner (x0, y0, x1, y1).
    const float margin = std::round(kPlotMargin * scale);
    const float bottomMargin = margin + (withLabels ? std::round(kLabelRoom * scale) : 0.0f);
    glm::vec4 plot(margin, bottomMargin, view.x - margin, view.y - margin);
    const bool decorated = plot.z - plot.x >= kMinPlotSize * scale && plot.w - plot.y >= kMinPlotSize * scale;
    if (!decorated)
        plot = glm::vec4(0.0f, 0.0f, view.x, view.y);
    // Whole window pixels, so that a fractional scale does not lay the ticks out every frame.
    const glm::vec2 plotSize = glm::round(glm::vec2(plot.z - plot.x, plot.w - plot.y) / scale);
    if (decorated && plotSize != laidOutFor_)
        LayOutTicks(plotSize);

    glm::mat4 plotToClip(1.0f);
    plotToClip[0][0] = 2.0f * (plot.z - plot.x) / view.x;
    plotToClip[1][1] = 2.0f * (plot.w - plot.y) / view.y;
    plotToClip[3][0] = 2.0f * plot.x / view.x - 1.0f;
    plotToClip[3][1] = 2.0f * plot.y / view.y - 1.0f;

    const bool depthWasOn = glIsEnabled(GL_DEPTH_TEST) == GL_TRUE;
    glDisable(GL_DEPTH_TEST);
    Gpu& gpu = *gpu_;

    if (plor::Program& lineProgram = context.programs->GetOrAdd(kLineProgram, kLineFiles);
        lineProgram.Use()) {
        if (gpu.lineProgramId != lineProgram.GetId()) {
            const GLuint id = lineProgram.GetId();
            gpu.locLineMatrix = glGetUniformLocation(id, "uModelViewProjection");
            gpu.locLineColor = glGetUniformLocation(id, "uColor");
            gpu.locUseVertexColor = glGetUniformLocation(id, "uUseVertexColor");
            gpu.locLineWidth = glGetUniformLocation(id, "uLineWidth");
            gpu.locViewportSize = glGetUniformLocation(id, "uViewportSize");
            gpu.lineProgramId = id;
        }
        glUniformMatrix4fv(gpu.locLineMatrix, 1, GL_FALSE, glm::value_ptr(plotToClip));
        glUniform1i(gpu.locUseVertexColor, 0);
        glUniform2f(gpu.locViewportSize, view.x, view.y);

        if (decorated) {
            const tesk::Color3f& frame = graphStyle->color;
            glUniform1f(gpu.locLineWidth, std::max(1.0f, std::round(scale)));
            if (gridVertexCount_ > 0) {
                glUniform3f(gpu.locLineColor, frame.r * kGridShade, frame.g * kGridShade,
                            frame.b * kGridShade);
                gpu.decoration.Draw(plor::PrimitiveType::Lines, 0, gridVertexCount_);
            }
            glUniform3f(gpu.locLineColor, frame.r, frame.g, frame.b);
            gpu.decoration.Draw(plor::PrimitiveType::Lines, gridVertexCount_, frameVertexCount_);
            if (axisVertexCount_ > 0) {
                glUniform3f(gpu.locLineColor, frame.r * 0.7f, frame.g * 0.7f, frame.b * 0.7f);
                gpu.decoration.Draw(plor::PrimitiveType::Lines, gridVertexCount_ + frameVertexCount_,
                                    axisVertexCount_);
            }
        }

        const int width = std::clamp(graphStyle->lineWidth, 1, GraphStyle::kMaxLineWidth);
        glUniform1f(gpu.locLineWidth, static_cast<float>(width) * scale);
        glUniform3f(gpu.locLineColor, graphStyle->lineColor.r, graphStyle->lineColor.g,
                    graphStyle->lineColor.b);
        for (const Run& run : runs_)
            gpu.points.Draw(plor::PrimitiveType::LineStrip, run.first, run.count);
    }

    const int pointSize = std::clamp(graphStyle->pointSize, 0, GraphStyle::kMaxPointSize);
    if (pointSize > 0) {
        plor::Program& pointProgram = context.programs->GetOrAdd(kPointProgram, kPointFiles);
        if (pointProgram.Use()) {
            if (gpu.pointProgramId != pointProgram.GetId()) {
                const GLuint id = pointProgram.GetId();
                gpu.locPointMatrix = glGetUniformLocation(id, "uPlotToClip");
                gpu.locPointSize = glGetUniformLocation(id, "uPointSize");
                gpu.locPointColor = glGetUniformLocation(id, "uColor");
                gpu.pointProgramId = id;
            }
            glUniformMatrix4fv(gpu.locPointMatrix, 1, GL_FALSE, glm::value_ptr(plotToClip));
            glUniform1f(gpu.locPointSize, static_cast<float>(pointSize) * scale);
            glUniform3f(gpu.locPointColor, graphStyle->pointColor.r, graphStyle->pointColor.g,
                        graphStyle->pointColor.b);
            const bool programSizeWasOn = glIsEnabled(GL_PROGRAM_POINT_SIZE) == GL_TRUE;
            glEnable(GL_PROGRAM_POINT_SIZE);
            gpu.points.Draw(plor::PrimitiveType::Points);
            if (!programSizeWasOn)
                glDisable(GL_PROGRAM_POINT_SIZE);
        }
    }

    if (depthWasOn)
        glEnable(GL_DEPTH_TEST);

    if (decorated && withLabels)
        PrintLabels(context, *graphStyle, plot / scale);
}

void GraphRenderer::PrintLabels(const RenderContext& context, const GraphStyle& style,
                                const glm::vec4& plot) const
{
    // Texts are placed in window pixels from the viewport's top-left corner; `plot` is in
    // window pixels from its bottom-left corner.
    const float height = static_cast<float>(context.glViewport.w) / Sanitised(context.pixelScale);
    const float left = plot.x;
    const float right = plot.z;
    const float top = height - plot.w;
    const float bottom = height - plot.y;
    auto xAt = [&](double value) {
        return left +
               static_cast<float>((value - rangeMin_.x) / (rangeMax_.x - rangeMin_.x)) * (right - left);
    };
    auto yAt = [&](double value) {
        return bottom -
               static_cast<float>((value - rangeMin_.y) / (rangeMax_.y - rangeMin_.y)) * (bottom - top);
    };

    TextRenderer& text = context.system->GetTextRenderer();
    const Scene* previousScene = text.GetScene();
    const TextAlignment previousAlignment = text.GetAlignment();
    const tesk::Color3f previousColor = text.GetColor();
    const float previousSize = text.GetSize();

    text.SetScene(context.scene);
    text.SetColor(style.color);
    text.SetSize(kLabelSize);
    // x labels centred under their ticks; y labels inside the frame, just over their grid
    // line, where they need no room beside the plot.
    text.SetAlignment(TextAlignment::Center);
    const float xBaseline = bottom + kLabelSize + 1.0f;
    for (std::size_t i = 0; i < xLabels_.size(); ++i)
        text.Print(xLabels_[i], xAt(xTicks_.At(static_cast<int>(i))), xBaseline);
    text.SetAlignment(TextAlignment::Left);
    for (std::size_t i = 0; i < yLabels_.size(); ++i) {
        const float baseline = yAt(yTicks_.At(static_cast<int>(i))) - 2.0f;
        if (baseline - kLabelSize >= top)
            text.Print(yLabels_[i], left + kTickLength + 2.0f, baseline);
    }

    text.SetScene(previousScene);
    text.SetAlignment(previousAlignment);
    text.SetColor(previousColor);
    text.SetSize(previousSize);
}

void GraphRenderer::ReleaseGpuResources()
{
    if (!gpu_)
        return;
    gpu_->points.Release();
    gpu_->decoration.Release();
    gpu_->lineProgramId = 0;
    gpu_->pointProgramId = 0;
    runs_.clear();
    pointCount_ = 0;
    gridVertexCount_ = frameVertexCount_ = axisVertexCount_ = 0;
    laidOutFor_ = glm::vec2(-1.0f);
}

} // namespace vexa::draw
