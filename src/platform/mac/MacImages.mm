#include "platform/mac/MacImages.h"
#import <AppKit/AppKit.h>

// No Core Foundation object is created here: the CGImage that AppKit returns is borrowed.
namespace orlo::mac {

QImage imageFrom(NSImage* image, int size)
{
    if (!image || size <= 0) return {};
    // Twice the size, for Retina screens.
    NSRect rect = NSMakeRect(0, 0, size * 2, size * 2);
    CGImageRef cgImage = [image CGImageForProposedRect:&rect context:nil hints:nil];
    if (!cgImage) return {};
    NSBitmapImageRep* bitmap = [[NSBitmapImageRep alloc] initWithCGImage:cgImage];
    NSData* png = [bitmap representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
    if (!png) return {};
    QImage out = QImage::fromData(QByteArray::fromNSData(png), "PNG");
    out.setDevicePixelRatio(2.0);
    return out;
}

}  // namespace orlo::mac
