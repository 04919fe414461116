#include "core/LookParser.h"

#include "core/CompositeCoordinates.h"
#include "core/ParseError.h"

#include <runa/rlog.h>

#include <jansson.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

namespace vexa {

namespace {

constexpr const char* kLabel = "vexa::LookParser";
constexpr const char* kViewLabel = "vexa::LookParser::ReadViewareaLooks";
constexpr const char* kSupportedVersion = "1.0";

struct JsonDeleter {
    void operator()(json_t* value) const { json_decref(value); }
};
using JsonPtr = std::unique_ptr<json_t, JsonDeleter>;

// Every optional key is taken only when it is present with the expected JSON type; jansson's
// unpack fails, and the target keeps its default, for a missing key and a mistyped one alike.

bool ReadString(json_t* object, const char* key, std::string& value)
{
    const char* text = nullptr;
    if (json_unpack(object, "{s:s}", key, &text) != 0)
        return false;
    value = text;
    return true;
}

bool ReadBool(json_t* object, const char* key, bool& value)
{
    int flag = 0;
    if (json_unpack(object, "{s:b}", key, &flag) != 0)
        return false;
    value = flag != 0;
    return true;
}

/// A window dimension: a JSON integer that fits a positive 32-bit pixel count.
void ReadPixelCount(json_t* object, const char* key, std::int32_t& value)
{
    json_int_t number = 0;
    if (json_unpack(object, "{s:I}", key, &number) != 0)
        return;
    if (number <= 0 || number > std::numeric_limits<std::int32_t>::max()) {
        rlog::Warn("Key " + std::string(key) + " must be a positive number of pixels, got " +
                       std::to_string(number) + "; keeping " + std::to_string(value),
                   kLabel);
        return;
    }
    value = static_cast<std::int32_t>(number);
}

/// An integer or real JSON number.
bool ReadNumber(json_t* object, const char* key, double& value)
{
    return json_unpack(object, "{s:F}", key, &value) == 0;
}

json_t* GetArray(json_t* object, const char* key)
{
    json_t* value = nullptr;
    if (json_unpack(object, "{s:o}", key, &value) != 0 || !json_is_array(value))
        return nullptr;
    return value;
}

std::uint32_t GridModeFromText(const std::string& text)
{
    // Exact and case-sensitive: "XY" is not a grid plane.
    if (text == "xy")
        return ViewareaLook::GridXY;
    if (text == "yz")
        return ViewareaLook::GridYZ;
    if (text == "zx")
        return ViewareaLook::GridZX;
    return ViewareaLook::GridNone;
}

/// Parses a position or size. The composite parser logs a wrong number of parts itself but
/// not a part that is no float, so that case is logged here with the key and text it came from.
template <class Composite>
Composite ParseCompositeKey(Composite (*parse)(const std::string&), const char* key, const std::string& text)
{
    const auto where = "Key " + std::string(key) + " holds \"" + text + "\", ";
    try {
        return parse(text);
    } catch (const std::invalid_argument&) {
        rlog::Fail(where + "which has a part that is not a number", kViewLabel);
        throw;
    } catch (const std::out_of_range&) {
        rlog::Fail(where + "which has a number out of float range", kViewLabel);
        throw;
    }
}

bool ReadResourceLooks(json_t* view, std::vector<ResourceLook>& resourceLooks)
{
    json_t* units = GetArray(view, "units");
    if (!units)
        return true;
    bool ok = true;
    std::size_t index = 0;
    json_t* unit = nullptr;
    json_array_foreach(units, index, unit)
    {
        std::string idText;
        if (!ReadString(unit, "id", idText)) {
            rlog::Fail("Key id is required", kViewLabel);
            ok = false;
            continue;
        }
        ResourceLook resourceLook;
        resourceLook.id = ResourceId(idText);
        if (!resourceLook.id.IsValid()) {
            rlog::Warn("Unit id \"" + idText + "\" names no resource; the unit is skipped", kViewLabel);
            continue;
        }
        ReadBool(unit, "permanent", resourceLook.permanent);
        ReadBool(unit, "gui-enabled", resourceLook.guiEnabled);
        ReadBool(unit, "select-enabled", resourceLook.selectEnabled);
        ReadBool(unit, "auto-select", resourceLook.autoSelect);
        resourceLooks.push_back(std::move(resourceLook));
    }
    return ok;
}

bool ReadViewareaLook(json_t* view, ViewareaLook& look)
{
    bool ok = true;
    std::string text;
    if (ReadString(view, "position", text)) {
        look.position = ParseCompositeKey(&StringToCompositePosition, "position", text);
    } else {
        rlog::Fail("Key position is required", kViewLabel);
        ok = false;
    }
    if (ReadString(view, "size", text)) {
        look.size = ParseCompositeKey(&StringToCompositeSize, "size", text);
    } else {
        rlog::Fail("Key size is required", kViewLabel);
        ok = false;
    }

    ReadBool(view, "sidebar-enabled", look.sidebarEnabled);
    ReadBool(view, "sidebar-visible", look.sidebarVisible);
    ReadBool(view, "axes", look.axes);
    ReadBool(view, "enable-camera-animator", look.cameraAnimatorEnabled);
    ReadBool(view, "enable-settings", look.settingsEnabled);
    if (ReadString(view, "grid-mode", text))
        look.gridMode = GridModeFromText(text);

    double gridUnits = 0.0;
    if (ReadNumber(view, "grid-units", gridUnits)) {
        // Checked as double: a value beyond float range has no float to become.
        if (gridUnits > 0.0 && gridUnits <= std::numeric_limits<float>::max())
            look.gridUnits = static_cast<float>(gridUnits);
        else
            rlog::Warn("Key grid-units must be a positive cell size, got " + std::to_string(gridUnits) +
                           "; keeping " + std::to_string(look.gridUnits),
                       kViewLabel);
    }

    if (!ReadResourceLooks(view, look.resourceLooks))
        ok = false;
    return ok;
}

/// Every view is read even after a faulty one, so that one run reports all missing keys.
bool ReadViewareaLooks(json_t* vexa, std::vector<ViewareaLook>& views)
{
    json_t* array = GetArray(vexa, "views");
    if (!array || json_array_size(array) == 0)
        return true; // keep the default full-window view area
    if (json_array_size(array) > LookParser::kMaxViewareas) {
        rlog::Fail("The look has " + std::to_string(json_array_size(array)) + " view areas; at most " +
                       std::to_string(LookParser::kMaxViewareas) + " are supported",
                   kViewLabel);
        return false;
    }

    std::vector<ViewareaLook> read;
    read.reserve(json_array_size(array));
    bool ok = true;
    std::size_t index = 0;
    json_t* view = nullptr;
    json_array_foreach(array, index, view)
    {
        ViewareaLook look;
        if (!ReadViewareaLook(view, look))
            ok = false;
        read.push_back(std::move(look));
    }
    views = std::move(read);
    return ok;
}

bool ReadWindowLook(json_t* root, WindowLook& look)
{
    json_t* vexa = nullptr;
    if (json_unpack(root, "{s:o}", "vexa", &vexa) != 0) {
        rlog::Fail("Key vexa is not defined", kLabel);
        return false;
    }

    std::string version;
    if (!ReadString(vexa, "version", version)) {
        const std::string message = "Look file version is not defined";
        rlog::Fail(message, kLabel);
        throw ParseError(message);
    }
    if (version != kSupportedVersion) {
        rlog::Fail("Version " + version + " not supported", kLabel);
        return false;
    }

    ReadString(vexa, "caption", look.caption);
    ReadBool(vexa, "maximized", look.maximized);
    ReadBool(vexa, "fullscreen", look.fullscreen);
    ReadPixelCount(vexa, "width", look.width);
    ReadPixelCount(vexa, "height", look.height);
    ReadBool(vexa, "options-enabled", look.optionsEnabled);
    const bool viewsOk = ReadViewareaLooks(vexa, look.views);

    std::string background;
    if (ReadString(vexa, "background", background)) {
        if (const auto color = tesk::Color3b::FromHex(background))
            look.background = *color;
        else
            rlog::Warn("Key background must be six hex digits, got \"" + background + "\"; keeping " +
                           look.background.ToHex(),
                       kLabel);
    }
    ReadBool(vexa, "key-shortcuts-enabled", look.keyShortcutsEnabled);
    return viewsOk;
}

std::string LoadErrorText(const json_error_t& error)
{
    std::string text = error.text;
    if (error.line > 0)
        text += " (line " + std::to_string(error.line) + ", column " + std::to_string(error.column) + ")";
    return text;
}

} // namespace

LookParser::LookParser(const std::string& path) : LookParser(path, Source::File) {}

LookParser LookParser::FromString(const std::string& json)
{
    return LookParser(json, Source::Text);
}

LookParser::LookParser(const std::string& source, Source kind)
{
    json_error_t error{};
    JsonPtr root(kind == Source::File ? json_load_file(source.c_str(), 0, &error)
                                      : json_loadb(source.data(), source.size(), 0, &error));
    if (!root) {
        const std::string message = kind == Source::File
                                        ? "Cannot read look file \"" + source + "\": " + LoadErrorText(error)
                                        : "Cannot parse look text: " + LoadErrorText(error);
        rlog::Fail(message, kLabel);
        throw ParseError(message);
    }

    // Built on a copy so that a failed look leaves nothing but the defaults behind.
    WindowLook look;
    succeeded_ = ReadWindowLook(root.get(), look);
    if (succeeded_)
        windowLook_ = std::move(look);
}

} // namespace vexa
