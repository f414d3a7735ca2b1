#include "platform/mac/MacAXElement.h"

// Core Foundation ownership: every Copy and Create result goes into a CFRef (MacCF.h).
namespace orlo::mac::ax {

Element application(pid_t pid, float timeout)
{
    Element app(AXUIElementCreateApplication(pid));
    if (app) AXUIElementSetMessagingTimeout(app.get(), timeout);
    return app;
}

std::optional<pid_t> pidOf(AXUIElementRef element)
{
    pid_t pid = 0;
    if (AXUIElementGetPid(element, &pid) != kAXErrorSuccess) return std::nullopt;
    return pid;
}

CFRef<CFTypeRef> attribute(AXUIElementRef element, CFStringRef name)
{
    CFRef<CFTypeRef> value;
    if (AXUIElementCopyAttributeValue(element, name, value.out()) != kAXErrorSuccess) value.reset();
    return value;
}

std::optional<QString> string(AXUIElementRef element, CFStringRef name)
{
    const CFRef<CFTypeRef> value = attribute(element, name);
    if (!value || CFGetTypeID(value.get()) != CFStringGetTypeID()) return std::nullopt;
    return QString::fromCFString(static_cast<CFStringRef>(value.get()));
}

std::optional<bool> boolean(AXUIElementRef element, CFStringRef name)
{
    const CFRef<CFTypeRef> value = attribute(element, name);
    if (!value || CFGetTypeID(value.get()) != CFBooleanGetTypeID()) return std::nullopt;
    return CFBooleanGetValue(static_cast<CFBooleanRef>(value.get()));
}

Element element(AXUIElementRef element, CFStringRef name)
{
    CFRef<CFTypeRef> value = attribute(element, name);
    if (!value || CFGetTypeID(value.get()) != AXUIElementGetTypeID()) return {};
    return Element(static_cast<AXUIElementRef>(value.release()));
}

std::optional<std::vector<Element>> elements(AXUIElementRef element, CFStringRef name)
{
    const CFRef<CFTypeRef> value = attribute(element, name);
    if (!value || CFGetTypeID(value.get()) != CFArrayGetTypeID()) return std::nullopt;
    const auto array = static_cast<CFArrayRef>(value.get());
    std::vector<Element> out;
    for (CFIndex i = 0, n = CFArrayGetCount(array); i < n; ++i) {
        const void* item = CFArrayGetValueAtIndex(array, i);  // borrowed from the array
        if (item && CFGetTypeID(item) == AXUIElementGetTypeID())
            out.push_back(Element::retained(static_cast<AXUIElementRef>(const_cast<void*>(item))));
    }
    return out;
}

bool setBoolean(AXUIElementRef element, CFStringRef name, bool value)
{
    return AXUIElementSetAttributeValue(element, name, value ? kCFBooleanTrue : kCFBooleanFalse) == kAXErrorSuccess;
}

namespace {
template <typename T>
std::optional<T> axValue(AXUIElementRef element, CFStringRef name, AXValueType type)
{
    const CFRef<CFTypeRef> value = attribute(element, name);
    if (!value || CFGetTypeID(value.get()) != AXValueGetTypeID()) return std::nullopt;
    T out{};
    if (!AXValueGetValue(static_cast<AXValueRef>(value.get()), type, &out)) return std::nullopt;
    return out;
}
}  // namespace

std::optional<QRectF> frame(AXUIElementRef window)
{
    const auto position = axValue<CGPoint>(window, kAXPositionAttribute, kAXValueTypeCGPoint);
    if (!position) return std::nullopt;
    const auto size = axValue<CGSize>(window, kAXSizeAttribute, kAXValueTypeCGSize);
    if (!size) return std::nullopt;
    return QRectF(position->x, position->y, size->width, size->height);
}

void setFrame(AXUIElementRef window, const QRectF& frame)
{
    const CGPoint origin = frame.topLeft().toCGPoint();
    const CGSize size = frame.size().toCGSize();
    const CFRef<AXValueRef> position(AXValueCreate(kAXValueTypeCGPoint, &origin));
    const CFRef<AXValueRef> extent(AXValueCreate(kAXValueTypeCGSize, &size));
    if (!position || !extent) return;
    AXUIElementSetAttributeValue(window, kAXPositionAttribute, position.get());
    AXUIElementSetAttributeValue(window, kAXSizeAttribute, extent.get());
    AXUIElementSetAttributeValue(window, kAXPositionAttribute, position.get());
}

Element windowOf(AXUIElementRef item)
{
    if (string(item, kAXRoleAttribute) == QStringLiteral("AXWindow")) return Element::retained(item);
    return element(item, kAXWindowAttribute);
}

}  // namespace orlo::mac::ax
