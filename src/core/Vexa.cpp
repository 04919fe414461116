#include <vexa/Config.h>
#include <vexa/Debugger.h>
#include <vexa/Lifecycle.h>
#include <vexa/Resource.h>

#include "core/Engine.h"
#include "core/Platform.h"
#include "core/Viewarea.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <runa/rlog.h>

#include <memory>
#include <mutex>
#include <stdexcept>

namespace vexa {

namespace {

std::unique_ptr<Engine>& EngineSlot()
{
    static std::unique_ptr<Engine> engine;
    return engine;
}

// Not cleared by Terminate: the windowing and GUI singletons do not come back cleanly, so a
// second start in one process is refused rather than half-working.
bool& InitializedFlag()
{
    static bool initialized = false;
    return initialized;
}

Engine& GetEngine()
{
    auto& slot = EngineSlot();
    if (!slot)
        slot = std::make_unique<Engine>();
    return *slot;
}

} // namespace

Engine* Engine::GetCurrent()
{
    return EngineSlot().get();
}

bool Initialize(const std::string& lookFile)
{
    bool& initialized = InitializedFlag();
    if (initialized) {
        rlog::Fail("Cannot initialize system again, it was initialized already.", "vexa::Initialize");
        return false;
    }
    try {
        initialized = GetEngine().Initialize(lookFile);
    } catch (const std::runtime_error& e) {
        const std::string message = e.what();
        rlog::Fail(message.empty() ? "Unknown exception" : message, "vexa::Initialize");
        return false;
    }
    return initialized;
}

bool Initialize()
{
    return Initialize(std::string());
}

void Terminate()
{
    auto& slot = EngineSlot();
    if (!slot)
        return;
    // Settings changed within the last moment (a camera still settling) are written while the
    // view areas they describe still exist.
    slot->SaveSettings();
    slot->ClearViewareas();
    std::unique_ptr<Engine> engine = std::move(slot);
    engine.reset();
}

void FocusCamera(const ResourceId& id)
{
    if (!InitializedFlag())
        return;
    for (const auto& area : GetEngine().GetViewareas())
        area->GetGadgetManager().FocusCamera(id);
    GetEngine().RequestRedraw();
}

void FrameBox(const glm::vec3& minimum, const glm::vec3& maximum)
{
    if (!InitializedFlag())
        return;
    for (const auto& area : GetEngine().GetViewareas())
        area->GetGadgetManager().FrameBox(minimum, maximum);
}

bool SaveScreenshot(const std::string& path)
{
    if (!InitializedFlag())
        return false;
    return GetEngine().SaveScreenshot(path);
}

runa::Version GetVersion()
{
    static std::once_flag once;
    static runa::Version version;
    std::call_once(once, [] { version = runa::Version::Parse(VEXA_VERSION_TEXT).value_or(runa::Version{}); });
    return version;
}

void SetIntermediateDirectory(const std::string& path)
{
    GetEngine().SetIntermediateDirectory(path);
}

void SetAssetDirectory(const std::string& path)
{
    GetEngine().SetAssetDirectory(path);
}

bool IsOpen()
{
    return InitializedFlag() && GetEngine().IsOpen();
}

void Update()
{
    if (InitializedFlag())
        GetEngine().Update();
}

void AddResource(const std::shared_ptr<Resource>& resource)
{
    if (InitializedFlag())
        GetEngine().AddResource(resource);
}

void RemoveAllResources()
{
    if (InitializedFlag())
        GetEngine().RemoveAllResources();
}

void RemoveResourcesWithPrefix(const std::string& prefix)
{
    if (InitializedFlag() && !prefix.empty())
        GetEngine().RemoveResourcesWithPrefix(prefix);
}

void SetFileDropCallback(const std::function<void(const std::vector<std::string>&)>& callback)
{
    GetEngine().SetFileDropCallback(callback);
}

void SetKeyDownCallback(const std::function<void(const Key&, const ModKeys&)>& callback)
{
    GetEngine().SetKeyDownCallback(callback);
}

void SetKeyUpCallback(const std::function<void(const Key&, const ModKeys&)>& callback)
{
    GetEngine().SetKeyUpCallback(callback);
}

bool IsAxesVisible(unsigned char viewarea)
{
    const auto& areas = GetEngine().GetViewareas();
    // Guarded although the caller must pass a valid index: an unknown area shows no axes.
    if (viewarea >= areas.size())
        return false;
    return areas[viewarea]->IsAxesVisible();
}

void SetAxesVisible(unsigned char viewarea, bool visible)
{
    const auto& areas = GetEngine().GetViewareas();
    if (viewarea < areas.size()) {
        areas[viewarea]->SetAxesVisible(visible);
        GetEngine().MarkViewareasDirty();
        GetEngine().RequestRedraw();
    }
}

void SetSidebarVisible(unsigned char viewarea, bool visible)
{
    const auto& areas = GetEngine().GetViewareas();
    if (viewarea >= areas.size() || areas[viewarea]->IsSidebarVisible() == visible)
        return;
    areas[viewarea]->SetSidebarVisible(visible);
    GetEngine().MarkViewareasDirty();
    GetEngine().RequestRedraw();
}

std::vector<ActiveResourceInfo> GetActiveResources()
{
    Engine& engine = GetEngine();
    std::vector<ActiveResourceInfo> infos;
    for (const auto& area : engine.GetViewareas()) {
        for (const auto& [id, gadget] : area->GetGadgetManager().GetGadgets()) {
            ActiveResourceInfo info;
            info.resource = engine.FindResource(id);
            info.viewareaId = area->GetId();
            const Sidebar* sidebar = area->GetSidebar();
            info.isSelected = sidebar != nullptr && sidebar->GetSelectedResource() == id;
            infos.push_back(std::move(info));
        }
    }
    return infos;
}

tesk::Color3b GetBackgroundColor()
{
    return GetEngine().GetOptions().GetBackgroundColor();
}

Debugger& Debug()
{
    static const std::string kNoDebugger = "Can not return vexa::Debugger. Have you initialized VEXA?";
    Engine& engine = GetEngine();
    const ResourceId id(Debugger::kBuiltInName, "Debugger");
    for (const auto& resource : engine.GetResources())
        if (resource->GetId() == id)
            if (auto* debugger = dynamic_cast<Debugger*>(resource.get()))
                return *debugger;
    // The debugger is a listed resource like any other: a host that emptied the list
    // (RemoveAllResources) has removed it, and asking for it is the same mistake as asking
    // before Initialize.
    rlog::Crash(kNoDebugger, "vexa::Debug");
    throw std::runtime_error(kNoDebugger);
}

} // namespace vexa
