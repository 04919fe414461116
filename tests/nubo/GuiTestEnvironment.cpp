#include "GuiTestEnvironment.h"

#include <gtest/gtest.h>

namespace nubo_test {

namespace {

constexpr int kDisplayWidth = 1280;
constexpr int kDisplayHeight = 800;

class GuiEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        ASSERT_TRUE(RestartSharedGui()) << "the DarkVexa scheme in " << kResourceDirectory;
    }
    void TearDown() override { SharedGui().Terminate(); }
};

[[maybe_unused]] const auto* const environment = ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

} // namespace

nubo::GuiSystem& SharedGui()
{
    static nubo::GuiSystem gui;
    return gui;
}

bool RestartSharedGui()
{
    return SharedGui().InitializeHeadless(kResourceDirectory, kDisplayWidth, kDisplayHeight);
}

} // namespace nubo_test
