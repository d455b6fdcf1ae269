// Stand-ins for what the host's capture library supplies to the Objective-C
// classes: its context, its JSON value, its resource loader and the
// conversion of a C++ exception into an NSError. Only what the parser classes
// call is here.
#pragma once

#include <Foundation/Foundation.h>

#include <exception>
#include <memory>

#include "qvx/core/context.h"
#include "qvx/core/json_value.h"

@interface QVXTrovaneContext : NSObject {
    std::shared_ptr<qvx::core::Context> _impl;
}
// A context without an event sink.
+ (id)context;
- (id)initWithCpp:(std::shared_ptr<qvx::core::Context>)impl;
- (std::shared_ptr<qvx::core::Context>)cppImpl;
@end

// A JSON value of the capture library, as handed to delegates.
@interface QVXJSONValue : NSObject {
    std::shared_ptr<qvx::core::JsonValue> _impl;
}
- (id)initWithCpp:(std::shared_ptr<qvx::core::JsonValue>)impl;
- (std::shared_ptr<qvx::core::JsonValue>)cppImpl;
// Compact JSON text of the value.
- (NSString*)JSONString;
// Where the value sits in its document, "/" for the root.
- (NSString*)absolutePath;
@end

// Where the capture library looks for resources: the bundles registered here.
@interface QVXResourceLoader : NSObject
+ (void)addSearchBundle:(NSBundle*)bundle;
+ (NSArray*)searchBundles;
@end

namespace qvx {

// An error of `domain` with code 0 and the exception's text as its
// localized description.
NSError* convertExceptionToNSError(const std::exception& exception, NSString* domain);

}  // namespace qvx
