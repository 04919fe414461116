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
};

} // namespace e2e
