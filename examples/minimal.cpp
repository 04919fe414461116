// The smallest host: point the library at its assets, open the window and run the loop
// until the user closes it.
//
//   minimal [--frames N] [--intermediate DIR]
//
// --frames stops after N updates, so that the program can run unattended (an automated test
// under a virtual display); --intermediate puts the state files somewhere else than ./vexa/.

#include <vexa/vexa.h>

#include <cstdlib>
#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    long frames = -1;
    std::string intermediate;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--frames" && i + 1 < argc)
            frames = std::strtol(argv[++i], nullptr, 10);
        else if (argument == "--intermediate" && i + 1 < argc)
            intermediate = argv[++i];
        else {
            std::cerr << "usage: " << argv[0] << " [--frames N] [--intermediate DIR]\n";
            return 2;
        }
    }

    const char* assets = std::getenv("VEXA_ASSET_DIR");
    vexa::SetAssetDirectory(assets != nullptr ? assets : VEXA_DEFAULT_ASSET_DIR);
    if (!intermediate.empty())
        vexa::SetIntermediateDirectory(intermediate);
    if (frames >= 0) {
        // Nobody is there to click a message box away.
        vexa::SetMessageBoxHandler([](const std::string& caption, const std::string& text,
                                      vexa::MessageIcon) { std::cerr << caption << ": " << text << "\n"; });
    }

    if (!vexa::Initialize())
        return 1;
    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame)
        vexa::Update();
    vexa::Terminate();
    return 0;
}
