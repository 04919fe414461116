#include <vexa/draw/PointPicking.h>

#include <glm/geometric.hpp>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 2)
#include <emmintrin.h>
#define VEXA_PICK_SSE2 1
#endif

namespace vexa::draw {

namespace {

/// Largest value of a 24-bit depth buffer: window depth 0..1 is stored as round(depth * this).
constexpr double kDepthSteps = static_cast<double>((1u << 24) - 1u);

/// Points per block of the coarse pass: a block costs one branch, and only blocks with a
/// candidate are looked at point by point.
constexpr std::size_t kBlock = 16;

/// How much the coarse test's float arithmetic may stray, relative to the size of the terms
/// it adds up (a float carries about 7 digits; a dot product of four terms loses a few ulps).
constexpr double kFloatSlack = 1e-6;

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

/// Row `r` of a matrix (glm keeps columns).
glm::dvec4 Row(const glm::mat4& m, int r)
{
    return {m[0][r], m[1][r], m[2][r], m[3][r]};
}

double Dot(const glm::dvec4& row, const glm::vec3& p)
{
    return row.x * p.x + row.y * p.y + row.z * p.z + row.w;
}

/// NDC depth (-1..1) as a 24-bit depth buffer stores it.
std::int64_t DepthStep(double depth)
{
    return std::llround((depth * 0.5 + 0.5) * kDepthSteps);
}

/// NDC depth where depth-buffer step `step` begins (at +0.5 the next one begins).
double DepthOfStep(double step)
{
    return step / kDepthSteps * 2.0 - 1.0;
}

/// The search: a coarse test in floats that every point goes through and that rejects all but
/// a few, then the exact test in doubles for those few, which decides.
///
/// The coarse test needs no division. With the cursor at (cx, cy) in NDC, a point's pixel
/// offsets from the cursor multiplied by its clip w are linear in the point,
///   e = w (px - cursor x) = (W / 2) (x - cx w),   f = -w (py - cursor y) = (H / 2) (y - cy w),
/// so "within r pixels" reads e^2 + f^2 <= (r w)^2 (for w > 0), and "NDC depth below d" reads
/// z <= d w. The rows are folded once; a point then costs four dot products.
///
/// Depths are compared relative to a reference a. Under a perspective projection NDC depths
/// crowd just below 1, where floats cannot tell a whole distant cloud's points apart; with
/// the right a, z - a w is the constant -b of depth = a - b / w, so the relative depth -b / w
/// keeps the precision of w.
///
/// Once a point is chosen, another can only win by a nearer depth-buffer step, or by the same
/// step and a shorter distance to the cursor: the coarse limits tighten to that, so in a dense
/// crowd of points under the cursor only the few that still may win reach the exact test.
/// Every coarse limit is widened by more than its float rounding, so that the coarse test
/// never drops a point the exact one would take.
class Search {
public:
    /// The coarse test's limits, in the units it compares.
    struct Limits {
        float radius;        ///< pixel radius
        float depthLimit;    ///< relative depth beyond which a point cannot win
        float outrightDepth; ///< relative depth below which a point wins wherever it lands
        float nearRadius;    ///< pixel radius within which a point of the chosen step wins
    };

    Search(const glm::mat4& clipFromPoints, const glm::ivec4& viewport, glm::vec2 cursor, float radius)
        : rowX_(Row(clipFromPoints, 0)), rowY_(Row(clipFromPoints, 1)), rowZ_(Row(clipFromPoints, 2)),
          rowW_(Row(clipFromPoints, 3)), x0_(viewport.x), y0_(viewport.y),
          width_(static_cast<double>(viewport.z) - viewport.x),
          height_(static_cast<double>(viewport.w) - viewport.y), cursor_(cursor), radius_(radius),
          radius2_(static_cast<double>(radius) * radius)
    {
        const double cx = 2.0 * (cursor_.x - x0_) / width_ - 1.0;
        const double cy = 1.0 - 2.0 * (cursor_.y - y0_) / height_;
        const glm::dvec4 e = (rowX_ - cx * rowW_) * (0.5 * width_);
        const glm::dvec4 f = (rowY_ - cy * rowW_) * (0.5 * height_);
        // The a that best cancels the point-dependent part of z against w: exact for a
        // perspective projection, 0 for an orthographic one (whose w does not depend on the point).
        const glm::dvec3 zPart(rowZ_), wPart(rowW_);
        const double wLength2 = glm::dot(wPart, wPart);
        depthOffset_ = wLength2 > 0.0 ? glm::dot(zPart, wPart) / wLength2 : 0.0;
        const glm::dvec4 z = rowZ_ - depthOffset_ * rowW_;
        e_ = glm::vec4(e);
        f_ = glm::vec4(f);
        z_ = glm::vec4(z);
        w_ = glm::vec4(rowW_);
        // The constant terms carry the camera's offset from the origin, the largest terms the
        // coarse sums cancel for points in view; the slack covers their rounding.
        pixelSlack_ = static_cast<float>(kFloatSlack * (std::abs(e.w) + std::abs(f.w)));
        depthSlack_ = static_cast<float>(kFloatSlack * std::abs(z.w));
        limits_.radius = CoarseRadius(radius);
        limits_.depthLimit = std::numeric_limits<float>::infinity();
        limits_.outrightDepth = std::numeric_limits<float>::infinity();
        limits_.nearRadius = limits_.radius;
    }

    bool IsValid() const
    {
        const auto finite = [](const glm::vec4& v) { return std::isfinite(v.x + v.y + v.z + v.w); };
        return width_ > 0.0 && height_ > 0.0 && std::isfinite(cursor_.x) && std::isfinite(cursor_.y) &&
               radius_ >= 0.0f && finite(e_) && finite(f_) && finite(z_) && finite(w_);
    }

    /// The coarse test of one point. NaN coordinates fail it; infinite ones may pass and are
    /// dropped by the exact test.
    bool MayWin(const glm::vec3& p) const
    {
        const float e = e_.x * p.x + e_.y * p.y + e_.z * p.z + e_.w;
        const float f = f_.x * p.x + f_.y * p.y + f_.z * p.z + f_.w;
        const float z = z_.x * p.x + z_.y * p.y + z_.z * p.z + z_.w;
        const float w = w_.x * p.x + w_.y * p.y + w_.z * p.z + w_.w;
        const float d = e * e + f * f;
        const float reach = limits_.radius * w + pixelSlack_;
        const float nearReach = limits_.nearRadius * w + pixelSlack_;
        return (w > 0.0f) & (d <= reach * reach) & (z <= limits_.depthLimit * w + depthSlack_) &
               ((z < limits_.outrightDepth * w + depthSlack_) | (d <= nearReach * nearReach));
    }

    /// Bit j set when point j of the block may win.
    unsigned BlockMask(const glm::vec3* block) const;

    /// The exact test, in doubles, as the pipeline clips and places the point.
    void Consider(std::size_t index, const glm::vec3& p)
    {
        // Copies of the chosen point tie with it in everything and the first one stays: clouds
        // with many points at one place (a scanner's zeros) pass the coarse test in bulk there.
        if (best_ != kNone && p == bestPosition_)
            return;
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            return;
        const double w = Dot(rowW_, p);
        const double z = Dot(rowZ_, p);
        if (!(w > 0.0) || std::abs(z) > w)
            return;
        const std::int64_t step = DepthStep(z / w);
        if (best_ != kNone && step > bestStep_)
            return;
        const double x = Dot(rowX_, p);
        const double y = Dot(rowY_, p);
        if (std::abs(x) > w || std::abs(y) > w)
            return;
        const double dx = x0_ + (x / w + 1.0) * 0.5 * width_ - cursor_.x;
        const double dy = y0_ + (1.0 - y / w) * 0.5 * height_ - cursor_.y;
        const double distance2 = dx * dx + dy * dy;
        if (distance2 > radius2_ || (best_ != kNone && step == bestStep_ && distance2 >= bestDistance2_))
            return;

        best_ = index;
        bestPosition_ = p;
        bestStep_ = step;
        bestDistance2_ = distance2;
        limits_.depthLimit = CoarseDepth(DepthOfStep(static_cast<double>(step) + 0.5));
        limits_.outrightDepth = CoarseDepth(DepthOfStep(static_cast<double>(step) - 0.5));
        limits_.nearRadius = CoarseRadius(std::sqrt(distance2));
    }

    std::optional<std::size_t> Result() const
    {
        return best_ == kNone ? std::nullopt : std::optional<std::size_t>(best_);
    }

private:
    /// A pixel radius for the coarse test, a hair wider than the exact one.
    static float CoarseRadius(double radius) { return static_cast<float>(radius * (1.0 + 1e-5) + 1e-3); }

    /// An NDC depth as a coarse limit: relative to the reference, a hair deeper.
    float CoarseDepth(double depth) const
    {
        const double relative = depth - depthOffset_;
        return static_cast<float>(relative + kFloatSlack * std::abs(relative));
    }

    glm::dvec4 rowX_, rowY_, rowZ_, rowW_;
    double x0_, y0_, width_, height_;
    glm::dvec2 cursor_;
    float radius_;
    double radius2_;
    double depthOffset_ = 0.0;
    glm::vec4 e_{0.0f}, f_{0.0f}, z_{0.0f}, w_{0.0f};
    float pixelSlack_ = 0.0f;
    float depthSlack_ = 0.0f;
    Limits limits_{};

    std::size_t best_ = kNone;
    glm::vec3 bestPosition_{0.0f};
    std::int64_t bestStep_ = 0;
    double bestDistance2_ = 0.0;
};

#if defined(VEXA_PICK_SSE2)

/// Four points at a time. The points are packed x y z x y z ..., which the compiler does not
/// vectorise for SSE2 on its own (it settles for pairs); three loads and five shuffles turn
/// four of them into one register of x, one of y and one of z.
unsigned Search::BlockMask(const glm::vec3* block) const
{
    static_assert(sizeof(glm::vec3) == 3 * sizeof(float) && kBlock % 4 == 0 && kBlock <= 32);
    struct Row4 {
        __m128 x, y, z, w;
        explicit Row4(const glm::vec4& r)
            : x(_mm_set1_ps(r.x)), y(_mm_set1_ps(r.y)), z(_mm_set1_ps(r.z)), w(_mm_set1_ps(r.w))
        {
        }
        __m128 Dot(__m128 px, __m128 py, __m128 pz) const
        {
            return _mm_add_ps(_mm_add_ps(_mm_mul_ps(x, px), _mm_mul_ps(y, py)),
                              _mm_add_ps(_mm_mul_ps(z, pz), w));
        }
    };
    const Row4 e(e_), f(f_), z(z_), w(w_);
    const __m128 radius = _mm_set1_ps(limits_.radius);
    const __m128 nearRadius = _mm_set1_ps(limits_.nearRadius);
    const __m128 depthLimit = _mm_set1_ps(limits_.depthLimit);
    const __m128 outrightDepth = _mm_set1_ps(limits_.outrightDepth);
    const __m128 pixelSlack = _mm_set1_ps(pixelSlack_);
    const __m128 depthSlack = _mm_set1_ps(depthSlack_);
    const __m128 zero = _mm_setzero_ps();

    const float* p = &block[0].x;
    unsigned mask = 0;
    for (std::size_t group = 0; group < kBlock / 4; ++group, p += 12) {
        const __m128 a = _mm_loadu_ps(p);                                // x0 y0 z0 x1
        const __m128 b = _mm_loadu_ps(p + 4);                            // y1 z1 x2 y2
        const __m128 c = _mm_loadu_ps(p + 8);                            // z2 x3 y3 z3
        const __m128 t0 = _mm_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2)); // x2 y2 x3 y3
        const __m128 t1 = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1)); // y0 z0 y1 z1
        const __m128 px = _mm_shuffle_ps(a, t0, _MM_SHUFFLE(2, 0, 3, 0));
        const __m128 py = _mm_shuffle_ps(t1, t0, _MM_SHUFFLE(3, 1, 2, 0));
        const __m128 pz = _mm_shuffle_ps(t1, c, _MM_SHUFFLE(3, 0, 3, 1));

        const __m128 ce = e.Dot(px, py, pz);
        const __m128 cf = f.Dot(px, py, pz);
        const __m128 cz = z.Dot(px, py, pz);
        const __m128 cw = w.Dot(px, py, pz);
        const __m128 d = _mm_add_ps(_mm_mul_ps(ce, ce), _mm_mul_ps(cf, cf));
        const __m128 reach = _mm_add_ps(_mm_mul_ps(radius, cw), pixelSlack);
        const __m128 nearReach = _mm_add_ps(_mm_mul_ps(nearRadius, cw), pixelSlack);
        const __m128 inside =
            _mm_and_ps(_mm_and_ps(_mm_cmpgt_ps(cw, zero), _mm_cmple_ps(d, _mm_mul_ps(reach, reach))),
                       _mm_cmple_ps(cz, _mm_add_ps(_mm_mul_ps(depthLimit, cw), depthSlack)));
        const __m128 wins = _mm_or_ps(_mm_cmplt_ps(cz, _mm_add_ps(_mm_mul_ps(outrightDepth, cw), depthSlack)),
                                      _mm_cmple_ps(d, _mm_mul_ps(nearReach, nearReach)));
        mask |= static_cast<unsigned>(_mm_movemask_ps(_mm_and_ps(inside, wins))) << (4 * group);
    }
    return mask;
}

#else

unsigned Search::BlockMask(const glm::vec3* block) const
{
    unsigned mask = 0;
    for (std::size_t j = 0; j < kBlock; ++j)
        mask |= (MayWin(block[j]) ? 1u : 0u) << j;
    return mask;
}

#endif

} // namespace

std::optional<std::size_t> PickPoint(std::span<const glm::vec3> positions, const glm::mat4& clipFromPoints,
                                     const glm::ivec4& viewport, glm::vec2 cursor, float radius)
{
    Search search(clipFromPoints, viewport, cursor, radius);
    if (positions.empty() || !search.IsValid())
        return std::nullopt;

    const glm::vec3* points = positions.data();
    const std::size_t count = positions.size();
    const std::size_t blocked = count - count % kBlock;
    for (std::size_t start = 0; start < blocked; start += kBlock) {
        // Limits only tighten during a block, so its mask still holds every point that may win.
        for (unsigned mask = search.BlockMask(points + start); mask != 0; mask &= mask - 1) {
            const std::size_t i = start + static_cast<std::size_t>(std::countr_zero(mask));
            search.Consider(i, points[i]);
        }
    }
    for (std::size_t i = blocked; i < count; ++i)
        if (search.MayWin(points[i]))
            search.Consider(i, points[i]);
    return search.Result();
}

} // namespace vexa::draw
