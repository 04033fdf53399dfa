#include "ui/reveal.h"

#import <AppKit/AppKit.h>

namespace boxlift {

// The Finder is always there, and is asked without waiting.
void Reveal::show(const QUrl& item) {
    @autoreleasepool {
        NSURL* url = item.adjusted(QUrl::StripTrailingSlash).toNSURL();
        [[NSWorkspace sharedWorkspace] activateFileViewerSelectingURLs:@[ url ]];
    }
}

} // namespace boxlift
