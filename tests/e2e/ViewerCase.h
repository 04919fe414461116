#pragma once
// Cases that open the four-ball scene in the viewer program (one view area filling the
// window, its sidebar on the right).

#include "E2eTest.h"

namespace e2e {

class ViewerCase : public E2eTest {
protected:
    /// Writes the scene, starts the viewer on it and waits until all four balls are drawn and
    /// the picture holds still (`start`). Fails fatally when they do not appear.
    void OpenClusters();

    /// Waits until the program has handled every event sent so far: hovering over the first
    /// panel's focus button lights it up, which takes a frame after all earlier input. The
    /// pointer is left at rest and the returned picture is taken after the light went out
    /// again.
    Picture Barrier();

    /// Writes ./vexa/options.bin in the working directory with this mouse sensitivity (the
    /// options panel's slider value, 0..1) and the defaults otherwise.
    void WriteOptions(float sensitivity);
};

} // namespace e2e
