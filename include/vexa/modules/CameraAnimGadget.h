#pragma once
// Records, plays and stores camera flights in one view area.
//
// Key frames are camera poses on a time line. "Add new keyframe" puts the camera's pose one
// "Keyframe delta time" after the last key frame (the first at time 0). Playback starts at
// time 0, shows time 0 exactly in its first update, then advances by the update's time step
// times "Playback speed" along a Catmull-Rom curve through the poses; past the last key frame
// it stops, or starts over with "Loop playback". "Rotate around" spins the camera about its
// target instead (0.15 rad per second at speed 1) and holds playback where it is.
//
// The panel's settings (delta time, playback speed, loop) are kept in the gadget's state file:
// after the base record, u32 0, float32 delta time, float32 speed, u8 loop. The key frames are
// not: they live in the JSON file, saved when the user asks.
//
// Files: <intermediate directory>/AnimationSequence01.json, an array of
// ["<time>", {"position": "x, y, z", "target": "x, y, z", "up": "x, y, z"}] in time order,
// numbers written with "%f". Loading replaces the key frames held, and only once the whole
// file was read: a file that cannot be read or has another shape is logged and changes
// nothing. A number that is not one throws std::invalid_argument or std::out_of_range from
// LoadAnimation (the panel's button logs it).

#include <vexa/Camera.h>
#include <vexa/Export.h>
#include <vexa/Gadget.h>

#include <tesk/Interpolator.h>

#include <memory>
#include <string>

namespace CEGUI {
class Window;
}

namespace vexa::modules {

class VEXA_API CameraAnimGadget : public Gadget {
public:
    explicit CameraAnimGadget(const Resource* resource);
    ~CameraAnimGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;
    void Update(float timeStep) override;

    /// Starts at time 0.
    void Play();
    void Stop();
    bool IsPlaying() const { return playing_; }
    float GetCurrentTime() const { return currentTime_; }

    /// A key frame of the camera's pose, one delta time after the last one; false without a
    /// camera.
    bool AddKeyframe();
    void RemoveLastKeyframe();
    void RemoveAllKeyframes();
    const tesk::Interpolator<Camera::Pose>& GetKeyframes() const { return keyframes_; }

    /// False (logged) when the file cannot be written.
    bool SaveAnimation() const;
    /// False (logged) when the file cannot be read or is not a camera animation.
    bool LoadAnimation();
    std::string GetAnimationFile() const;
    /// Reads key frames from JSON text in the file's form, with LoadAnimation's messages and
    /// exceptions; `source` names the text. `keyframes` is replaced only when all was read.
    static bool ParseAnimation(const std::string& json, const std::string& source,
                               tesk::Interpolator<Camera::Pose>& keyframes);

    bool IsRotatingAround() const { return rotateAround_; }
    void SetRotateAround(bool rotate) { rotateAround_ = rotate; }
    bool IsLooping() const { return loop_; }
    void SetLooping(bool loop) { loop_ = loop; }
    float GetPlaybackSpeed() const { return playbackSpeed_; }
    void SetPlaybackSpeed(float speed) { playbackSpeed_ = speed; }
    float GetKeyframeDeltaTime() const { return deltaTime_; }
    void SetKeyframeDeltaTime(float seconds) { deltaTime_ = seconds; }

    /// "Key-frame count: " and the number of key frames.
    std::string GetCountText() const;

protected:
    bool ReadFromStream(std::istream& stream) override;
    void WriteToStream(std::ostream& stream) const override;

private:
    void RefreshCount();

    tesk::Interpolator<Camera::Pose> keyframes_;
    float currentTime_ = 0.0f;
    bool playing_ = false;
    bool justStarted_ = false;
    bool rotateAround_ = false;
    bool loop_ = false;
    float playbackSpeed_ = 1.0f;
    float deltaTime_ = 1.0f;
    // The label's window belongs to the panel, which may go before the gadget (a sidebar
    // rebuild); the window clears this slot when it is destroyed.
    std::shared_ptr<CEGUI::Window*> countWindow_;
};

} // namespace vexa::modules
