#include <vexa/modules/CameraAnimGadget.h>
#include <vexa/modules/CameraAnimResource.h>

#include "core/EngineServices.h"
#include "gui/CeguiText.h"

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <CEGUI/Window.h>

#include <jansson.h>

#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

namespace vexa::modules {

namespace {

constexpr std::uint32_t kSettingsVersion = 0;
constexpr float kMaxDeltaTime = 3600.0f;
constexpr float kMaxSpeed = 100.0f;

constexpr const char* kSaveLabel = "vexa::modules::CameraAnimGadget::SaveAnimation";
constexpr const char* kLoadLabel = "vexa::modules::CameraAnimGadget::LoadAnimation";

struct JsonDeleter {
    void operator()(json_t* json) const { json_decref(json); }
};
using JsonPtr = std::unique_ptr<json_t, JsonDeleter>;

std::string FormatFloat(float value)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%f", static_cast<double>(value));
    return text;
}

std::string FormatVector(const glm::vec3& v)
{
    return FormatFloat(v.x) + ", " + FormatFloat(v.y) + ", " + FormatFloat(v.z);
}

// Three numbers separated by commas; std::stof throws on text that is not a number.
glm::vec3 ParseVector(const std::string& text)
{
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ',')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    if (parts.size() != 3)
        throw std::invalid_argument("A vector needs three numbers separated by commas: \"" + text + "\"");
    return {std::stof(parts[0]), std::stof(parts[1]), std::stof(parts[2])};
}

void LogLoadFailure(const std::string& source, const std::string& text)
{
    rlog::Fail("Camera animation load failed: " + source + " - " + text, kLoadLabel);
}

} // namespace

CameraAnimResource::CameraAnimResource(const std::string& name) : Resource(name, "CameraAnimResource") {}

std::shared_ptr<Gadget> CameraAnimResource::CreateGadget()
{
    return std::make_shared<CameraAnimGadget>(this);
}

CameraAnimGadget::CameraAnimGadget(const Resource* resource) : Gadget(resource) {}

CameraAnimGadget::~CameraAnimGadget()
{
    if (countWindow_)
        *countWindow_ = nullptr;
}

void CameraAnimGadget::Initialize()
{
    LoadState();
    Gadget::Initialize();
}

bool CameraAnimGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    runa::BinaryReader reader(stream);
    float delta = 0.0f;
    float speed = 0.0f;
    bool loop = false;
    if (!reader.ReadVersion(kSettingsVersion) || !reader.Read(delta) || !reader.Read(speed) ||
        !reader.Read(loop))
        return false;
    // Values the panel could not have produced mean a damaged file: keep the defaults.
    if (!(delta >= 0.0f && delta <= kMaxDeltaTime) || !(speed >= 0.0f && speed <= kMaxSpeed))
        return false;
    deltaTime_ = delta;
    playbackSpeed_ = speed;
    loop_ = loop;
    return true;
}

void CameraAnimGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    runa::BinaryWriter writer(stream);
    writer.WriteVersion(kSettingsVersion);
    writer.Write(deltaTime_).Write(playbackSpeed_).Write(loop_);
}

void CameraAnimGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized())
        return;
    if (gui::Checkbox* rotate = generator.AddCheckbox("Rotate around"))
        rotate->SetLink(&rotateAround_);
    if (gui::Button* play = generator.AddButton("Play animation"))
        play->Subscribe([this](const gui::Button*) { Play(); });
    if (gui::Button* stop = generator.AddButton("Stop animation"))
        stop->Subscribe([this](const gui::Button*) { Stop(); });
    if (gui::Button* add = generator.AddButton("Add new keyframe"))
        add->Subscribe([this](const gui::Button*) { AddKeyframe(); });
    if (gui::NumericFloat* delta = generator.AddNumericFloat("Keyframe delta time"))
        delta->SetMinMax(0.0f, kMaxDeltaTime)->SetStep(0.1f)->SetLink(&deltaTime_);
    if (gui::NumericFloat* speed = generator.AddNumericFloat("Playback speed"))
        speed->SetMinMax(0.0f, kMaxSpeed)->SetStep(0.1f)->SetLink(&playbackSpeed_);
    if (gui::Checkbox* loop = generator.AddCheckbox("Loop playback"))
        loop->SetLink(&loop_);
    if (gui::Button* removeLast = generator.AddButton("Remove last keyframe"))
        removeLast->Subscribe([this](const gui::Button*) { RemoveLastKeyframe(); });
    if (gui::Button* removeAll = generator.AddButton("Remove all keyframes"))
        removeAll->Subscribe([this](const gui::Button*) { RemoveAllKeyframes(); });
    if (gui::Button* save = generator.AddButton("Save keyframes"))
        save->Subscribe([this](const gui::Button*) { SaveAnimation(); });
    if (gui::Button* load = generator.AddButton("Load keyframes"))
        load->Subscribe([this](const gui::Button*) {
            // A bad number in the file must not end the host from inside a click.
            try {
                LoadAnimation();
            } catch (const std::exception& e) {
                LogLoadFailure(GetAnimationFile(), e.what());
            }
        });
    gui::Label* count = generator.AddLabel(GetCountText());
    if (countWindow_)
        *countWindow_ = nullptr;
    countWindow_.reset();
    if (count != nullptr && count->GetWidget() != nullptr) {
        countWindow_ = std::make_shared<CEGUI::Window*>(count->GetWidget());
        count->GetWidget()->subscribeEvent(CEGUI::Window::EventDestructionStarted,
                                           [slot = countWindow_](const CEGUI::EventArgs&) {
                                               *slot = nullptr;
                                               return true;
                                           });
    }
}

void CameraAnimGadget::Update(float timeStep)
{
    Camera* camera = GetCamera();
    if (camera == nullptr)
        return;
    const float step = timeStep * playbackSpeed_;
    if (rotateAround_) {
        // 30 px of horizontal drag per second of speed: 0.15 rad.
        if (step != 0.0f)
            camera->ScreenRotate(glm::vec2(0.0f), glm::vec2(-30.0f * step, 0.0f));
        return;
    }
    if (!playing_)
        return;
    float time = currentTime_;
    if (justStarted_)
        justStarted_ = false;
    else
        currentTime_ = time = time + step;
    // Without key frames the interpolator reports it; a default pose would put the camera
    // onto its own target.
    const Camera::Pose pose = keyframes_.GetValueAtTimeCubic(time);
    if (!keyframes_.Empty())
        camera->SetPose(pose);
    if (currentTime_ > keyframes_.LastTime()) {
        if (loop_)
            currentTime_ = 0.0f;
        else
            playing_ = false;
    }
}

void CameraAnimGadget::Play()
{
    currentTime_ = 0.0f;
    justStarted_ = true;
    playing_ = true;
    DrawOnNextUpdate();
}

void CameraAnimGadget::Stop()
{
    playing_ = false;
}

bool CameraAnimGadget::AddKeyframe()
{
    const Camera* camera = GetCamera();
    if (camera == nullptr)
        return false;
    const float time = keyframes_.Empty() ? 0.0f : keyframes_.LastTime() + deltaTime_;
    keyframes_.Insert(time, camera->GetPose());
    RefreshCount();
    return true;
}

void CameraAnimGadget::RemoveLastKeyframe()
{
    keyframes_.RemoveLast();
    RefreshCount();
}

void CameraAnimGadget::RemoveAllKeyframes()
{
    keyframes_.Clear();
    RefreshCount();
}

std::string CameraAnimGadget::GetAnimationFile() const
{
    return GetEngineServices().GetIntermediateDirectory() + "/AnimationSequence01.json";
}

bool CameraAnimGadget::SaveAnimation() const
{
    JsonPtr root(json_array());
    for (const auto& key : keyframes_.Keys()) {
        const std::string time = FormatFloat(key.time);
        const std::string position = FormatVector(key.value.position);
        const std::string target = FormatVector(key.value.target);
        const std::string up = FormatVector(key.value.up);
        json_t* element = json_pack("[s:{s:s,s:s,s:s}]", time.c_str(), "position", position.c_str(), "target",
                                    target.c_str(), "up", up.c_str());
        if (element == nullptr || json_array_append_new(root.get(), element) != 0) {
            rlog::Fail("Camera animation save failed!", kSaveLabel);
            return false;
        }
    }
    if (json_dump_file(root.get(), GetAnimationFile().c_str(), JSON_INDENT(4)) != 0) {
        rlog::Fail("Camera animation save failed!", kSaveLabel);
        return false;
    }
    return true;
}

namespace {

// Fills `loaded` from a parsed file; false (logged) when it has another shape.
bool ReadKeyframes(json_t* root, const std::string& source, tesk::Interpolator<Camera::Pose>& loaded)
{
    if (!json_is_array(root)) {
        LogLoadFailure(source, "the file holds no array of key frames");
        return false;
    }
    loaded.Reserve(json_array_size(root));
    json_error_t error;
    size_t index = 0;
    json_t* element = nullptr;
    json_array_foreach(root, index, element)
    {
        const char* time = nullptr;
        const char* position = nullptr;
        const char* target = nullptr;
        const char* up = nullptr;
        if (json_unpack_ex(element, &error, 0, "[s,{s:s,s:s,s:s}]", &time, "position", &position, "target",
                           &target, "up", &up) != 0) {
            LogLoadFailure(error.source, error.text);
            return false;
        }
        Camera::Pose pose(ParseVector(target), ParseVector(position), ParseVector(up));
        loaded.Insert(std::stof(time), pose);
    }
    return true;
}

} // namespace

bool CameraAnimGadget::LoadAnimation()
{
    const std::string file = GetAnimationFile();
    json_error_t error;
    JsonPtr root(json_load_file(file.c_str(), 0, &error));
    if (!root) {
        LogLoadFailure(error.source, error.text);
        return false;
    }
    // Read into a fresh store: the held key frames stay until the whole file has been read.
    tesk::Interpolator<Camera::Pose> loaded;
    if (!ReadKeyframes(root.get(), file, loaded))
        return false;
    keyframes_ = std::move(loaded);
    RefreshCount();
    return true;
}

bool CameraAnimGadget::ParseAnimation(const std::string& json, const std::string& source,
                                      tesk::Interpolator<Camera::Pose>& keyframes)
{
    json_error_t error;
    JsonPtr root(json_loadb(json.data(), json.size(), 0, &error));
    if (!root) {
        LogLoadFailure(source + ":" + std::to_string(error.line), error.text);
        return false;
    }
    tesk::Interpolator<Camera::Pose> loaded;
    if (!ReadKeyframes(root.get(), source, loaded))
        return false;
    keyframes = std::move(loaded);
    return true;
}

std::string CameraAnimGadget::GetCountText() const
{
    return "Key-frame count: " + std::to_string(keyframes_.Size());
}

void CameraAnimGadget::RefreshCount()
{
    if (!countWindow_ || *countWindow_ == nullptr)
        return;
    (*countWindow_)->setText(gui::ToCeguiText(GetCountText()));
    DrawOnNextUpdate();
}

} // namespace vexa::modules
