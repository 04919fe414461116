#pragma once
// The one engine the engine and module benchmarks share: started on first use (one view
// area, three small resources, a few settled frames), null when there is no display.

namespace vexa {
class Engine;
}

namespace bench {

vexa::Engine* BenchEngine();

} // namespace bench
