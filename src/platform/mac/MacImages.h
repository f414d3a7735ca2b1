#pragma once
#include <QImage>

#ifdef __OBJC__
@class NSImage;
#else
class NSImage;
#endif

namespace orlo::mac {

// An AppKit image drawn at a size, in points, for Qt; null when it cannot be drawn.
QImage imageFrom(NSImage* image, int size);

}  // namespace orlo::mac
