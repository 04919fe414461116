#pragma once
// A gadget's state stream is its own business (LoadState reads it from the engine's folder);
// the fuzz programs open it up, as the module tests do, behind one interface for all kinds.

#include <istream>
#include <ostream>

namespace vexa::fuzz {

class StateHolder {
public:
    virtual ~StateHolder() = default;
    virtual bool Read(std::istream& in) = 0;
    virtual void Write(std::ostream& out) const = 0;
};

template <class G>
class Opened final : public StateHolder, public G {
public:
    using G::G;
    bool Read(std::istream& in) override { return G::ReadFromStream(in); }
    void Write(std::ostream& out) const override { G::WriteToStream(out); }
};

} // namespace vexa::fuzz
