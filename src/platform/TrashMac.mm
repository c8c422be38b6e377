// The Finder's Trash, through NSFileManager's trashItemAtURL (which Qt's
// QFile::moveToTrash also calls). Called directly so that a failure carries
// NSError's own description: Qt reports the Cocoa error code as if it were an
// errno, and strerror of it names an unrelated failure.
#include "Trash.h"

#import <Foundation/Foundation.h>

namespace {

class FinderTrash final : public Trash
{
public:
    bool trashItem(const QString &path, QString *error) override
    {
        bool trashed = false;
        @autoreleasepool { // vesk-cli runs no Cocoa event loop that would drain one
            NSURL *url = [NSURL fileURLWithPath:path.toNSString()];
            NSError *failure = nil;
            trashed = [[NSFileManager defaultManager] trashItemAtURL:url resultingItemURL:nil error:&failure];
            if (!trashed)
                *error = failure ? QString::fromNSString(failure.localizedDescription)
                                 : QStringLiteral("The item could not be moved to the Trash");
        }
        return trashed;
    }
};

} // namespace

Trash &Trash::platform()
{
    static FinderTrash trash;
    return trash;
}
