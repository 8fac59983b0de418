#include "pc/file_access.h"

#include "core/current_platform.h"
#include "pc/files.h"

namespace ovno2::Files {

std::unique_ptr<platform::OpenFile> openByWidePath(TextView path) {
    platform::Files& files = currentPlatform().files();
    std::unique_ptr<platform::OpenFile> file;
    if (files.openWide(path, file) == noFailure) return file;
    if (files.openWide(Text(u"\\\\?\\").append(path), file) == noFailure) return file;
    return nullptr;
}

platform::AutomationObject& fileSystemObject() {
    platform::ObjectPointer& object = stateOf<State>().fileSystemObject;
    if (!object) object = currentPlatform().automation().create(u"Scripting.FileSystemObject");
    if (!object) throw RuntimeFailure(cannotCreateObject);
    return *object;
}

Text textOf(const platform::Variant& value) {
    if (const Text* text = std::get_if<Text>(&value)) return *text;
    throw RuntimeFailure(typeMismatch);
}

double numberOf(const platform::Variant& value) {
    if (const Long* number = std::get_if<Long>(&value)) return *number;
    if (const double* number = std::get_if<double>(&value)) return *number;
    throw RuntimeFailure(typeMismatch);
}

bool truthOf(const platform::Variant& value) {
    if (const bool* truth = std::get_if<bool>(&value)) return *truth;
    return numberOf(value) != 0;
}

platform::ObjectPointer objectOf(const platform::Variant& value) {
    const platform::ObjectPointer* const object = std::get_if<platform::ObjectPointer>(&value);
    if (!object) throw RuntimeFailure(typeMismatch);
    if (!*object) throw RuntimeFailure(objectNotSet);
    return *object;
}

platform::Variant callWith(platform::AutomationObject& object, TextView method, TextView argument) {
    const platform::Variant value = Text(argument);
    return object.call(method, {&value, 1});
}

}  // namespace ovno2::Files
