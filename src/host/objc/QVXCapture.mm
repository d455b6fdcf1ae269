#include "host/objc/QVXCapture.h"

#include <mutex>
#include <string>

// Memory is managed by hand throughout this layer: GCC's Objective-C, which
// builds it on Linux, has no ARC. Factories return autoreleased objects.

@implementation QVXTrovaneContext
+ (id)context {
    return [[(QVXTrovaneContext*)[self alloc] initWithCpp:std::make_shared<qvx::core::Context>()]
        autorelease];
}
- (id)initWithCpp:(std::shared_ptr<qvx::core::Context>)impl {
    if ((self = [super init]) != nil) _impl = std::move(impl);
    return self;
}
- (std::shared_ptr<qvx::core::Context>)cppImpl {
    return _impl;
}
@end

@implementation QVXJSONValue
- (id)initWithCpp:(std::shared_ptr<qvx::core::JsonValue>)impl {
    if ((self = [super init]) != nil) _impl = std::move(impl);
    return self;
}
- (std::shared_ptr<qvx::core::JsonValue>)cppImpl {
    return _impl;
}
- (NSString*)JSONString {
    return [NSString stringWithUTF8String:_impl->toString().c_str()];
}
- (NSString*)absolutePath {
    return [NSString stringWithUTF8String:_impl->getAbsolutePath().c_str()];
}
@end

namespace {
std::mutex searchBundlesMutex;
NSMutableArray* searchBundles = nil;
}  // namespace

@implementation QVXResourceLoader
+ (void)addSearchBundle:(NSBundle*)bundle {
    std::lock_guard<std::mutex> lock(searchBundlesMutex);
    if (searchBundles == nil) searchBundles = [[NSMutableArray alloc] init];  // kept for good
    if (bundle != nil && ![searchBundles containsObject:bundle]) [searchBundles addObject:bundle];
}
+ (NSArray*)searchBundles {
    std::lock_guard<std::mutex> lock(searchBundlesMutex);
    return searchBundles == nil ? [NSArray array] : [NSArray arrayWithArray:searchBundles];
}
@end

namespace qvx {

NSError* convertExceptionToNSError(const std::exception& exception, NSString* domain) {
    NSString* text = [NSString stringWithUTF8String:exception.what()];
    if (text == nil) text = @"";
    NSDictionary* info = [NSDictionary dictionaryWithObject:text forKey:NSLocalizedDescriptionKey];
    return [NSError errorWithDomain:domain code:0 userInfo:info];
}

}  // namespace qvx
