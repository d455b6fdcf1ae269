#include "host/objc/QVXParser.h"

#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "qvx/contract.h"
#include "qvx/parsed.h"

// Memory is managed by hand throughout this layer: GCC's Objective-C, which
// builds it on Linux, has no ARC. Every alloc/init is balanced by a release
// or an autorelease in the same method.

NSString* const QVXParserErrorDomain = @"QVXParserErrorDomain";
NSString* const QVXParserIssueErrorDomain = @"QVXParserIssueErrorDomain";
NSString* const QVXParserDeserializerErrorDomain = @"QVXParserDeserializerErrorDomain";
NSString* const QVXParserIssueStartingCharactersErrorUserInfoKey =
    @"QVXParserIssueStartingCharactersErrorKey";
NSString* const QVXParserIssueVersionErrorUserInfoKey = @"QVXParserIssueVersionErrorKey";
NSString* const QVXParserIssueMinimalVersionErrorUserInfoKey =
    @"QVXParserIssueMinimalVersionErrorKey";
NSString* const QVXParserIssueElementNameErrorUserInfoKey = @"QVXParserIssueElementNameErrorKey";
NSString* const QVXParserIssueStringErrorUserInfoKey = @"QVXParserIssueStringErrorKey";
NSString* const QVXParserIssueLengthErrorUserInfoKey = @"QVXParserIssueLengthErrorKey";
NSString* const QVXParserIssueCharsetErrorUserInfoKey = @"QVXParserIssueCharsetErrorKey";

namespace {

void requireArgument(id argument, const char* name) {
    if (argument == nil) {
        parser::contract::fail(
            std::string("Null passed to a callee that requires a non-null argument: ") + name);
    }
}

// Text as the JSON form prints it: bytes that are not valid UTF-8 dropped.
NSString* toNSString(const std::string& bytes) {
    NSString* text = [[[NSString alloc] initWithBytes:bytes.data()
                                               length:bytes.size()
                                             encoding:NSUTF8StringEncoding] autorelease];
    if (text != nil) return text;
    const auto clean = nlohmann::json::parse(
        nlohmann::json(bytes).dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore));
    const auto& valid = clean.get_ref<const std::string&>();
    return [[[NSString alloc] initWithBytes:valid.data()
                                     length:valid.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

std::string toStdString(NSString* text) {
    const char* utf8 = [text UTF8String];
    return utf8 == nullptr ? std::string() : std::string(utf8);
}

NSString* infoKeyConstant(ParserIssueInfoKey key) {
    switch (key) {
        case ParserIssueInfoKey::StartingCharacters:
            return QVXParserIssueStartingCharactersErrorUserInfoKey;
        case ParserIssueInfoKey::Version:
            return QVXParserIssueVersionErrorUserInfoKey;
        case ParserIssueInfoKey::MinimalVersion:
            return QVXParserIssueMinimalVersionErrorUserInfoKey;
        case ParserIssueInfoKey::ElementName:
            return QVXParserIssueElementNameErrorUserInfoKey;
        case ParserIssueInfoKey::String:
            return QVXParserIssueStringErrorUserInfoKey;
        case ParserIssueInfoKey::Length:
            return QVXParserIssueLengthErrorUserInfoKey;
        case ParserIssueInfoKey::Charset:
            return QVXParserIssueCharsetErrorUserInfoKey;
    }
    return nil;
}

NSMutableDictionary* infoDictionary(const parser::ParserIssue& issue) {
    NSMutableDictionary* info = [NSMutableDictionary dictionary];
    for (const auto& [key, value] : issue.additionalInfo) {
        NSString* name = infoKeyConstant(key);
        if (name != nil) [info setObject:toNSString(value) forKey:name];
    }
    return info;
}

void setError(NSError** error, NSString* domain, NSInteger code, NSDictionary* userInfo) {
    if (error != nullptr) *error = [NSError errorWithDomain:domain code:code userInfo:userInfo];
}

NSDictionary* describing(const std::string& text) {
    return [NSDictionary dictionaryWithObject:toNSString(text) forKey:NSLocalizedDescriptionKey];
}

}  // namespace

namespace qvx {

ParserDataFormat coreFormatFromHost(QVXParserDataFormat format) {
    switch (format) {
        case QVXParserDataFormatHibc:
            return ParserDataFormat::Hibc;
        case QVXParserDataFormatSwissQr:
            return ParserDataFormat::SwissQr;
        case QVXParserDataFormatVin:
            return ParserDataFormat::Vin;
        case QVXParserDataFormatIataBcbp:
            return ParserDataFormat::IataBcbp;
        case QVXParserDataFormatGs1DigitalLink:
            return ParserDataFormat::Gs1DigitalLink;
        default:
            return ParserDataFormat::Gs1Ai;
    }
}

QVXParserDataFormat hostFormatFromCore(ParserDataFormat format) {
    switch (format) {
        case ParserDataFormat::Hibc:
            return QVXParserDataFormatHibc;
        case ParserDataFormat::SwissQr:
            return QVXParserDataFormatSwissQr;
        case ParserDataFormat::Vin:
            return QVXParserDataFormatVin;
        case ParserDataFormat::IataBcbp:
            return QVXParserDataFormatIataBcbp;
        case ParserDataFormat::Gs1DigitalLink:
            return QVXParserDataFormatGs1DigitalLink;
        case ParserDataFormat::Dlid:
        case ParserDataFormat::Mrtd:
        case ParserDataFormat::UsUsid:
            parser::contract::fail("Format not supported");
        case ParserDataFormat::Gs1Ai:
            break;
    }
    return QVXParserDataFormatGs1Ai;
}

}  // namespace qvx

@implementation QVXParserIssue
- (id)initWithCpp:(std::shared_ptr<parser::ParserIssue>)impl {
    if ((self = [super init]) != nil) _impl = std::move(impl);
    return self;
}
- (std::shared_ptr<void>)typeErasedCppImpl {
    return _impl;
}
- (NSInteger)code {
    const auto code = static_cast<NSInteger>(_impl->code);
    return code == 2 || (code >= 1000 && code <= 1013) ? code : 0;
}
- (NSString*)message {
    return toNSString(_impl->message);
}
- (NSDictionary*)additionalInfo {
    return infoDictionary(*_impl);
}
@end

@implementation QVXParsedField
- (id)initWithCpp:(std::shared_ptr<parser::ParsedField>)impl {
    if ((self = [super init]) != nil) _impl = std::move(impl);
    return self;
}
- (std::shared_ptr<void>)typeErasedCppImpl {
    return _impl;
}
- (NSString*)name {
    return toNSString(_impl->name);
}
- (NSString*)rawString {
    return toNSString(_impl->rawString);
}
- (id)parsed {
    // Fragments allowed: a field's value is often a bare string or number.
    const std::string text = parser::toCompactJsonText(_impl->parsed);
    NSData* data = [NSData dataWithBytes:text.data() length:text.size()];
    return [NSJSONSerialization JSONObjectWithData:data
                                           options:NSJSONReadingAllowFragments
                                             error:nullptr];
}
- (NSArray*)issues {
    NSMutableArray* messages = [NSMutableArray arrayWithCapacity:_impl->issues.size()];
    for (const auto& issue : _impl->issues) [messages addObject:toNSString(issue->message)];
    return messages;
}
- (NSArray*)warnings {
    NSMutableArray* issues = [NSMutableArray arrayWithCapacity:_impl->issues.size()];
    for (const auto& issue : _impl->issues) {
        [issues
            addObject:[[(QVXParserIssue*)[QVXParserIssue alloc] initWithCpp:issue] autorelease]];
    }
    return issues;
}
@end

@implementation QVXParsedData
- (id)initWithCpp:(std::shared_ptr<parser::ParsedData>)impl {
    if ((self = [super init]) != nil) _impl = std::move(impl);
    return self;
}
- (std::shared_ptr<void>)typeErasedCppImpl {
    return _impl;
}
- (NSString*)jsonString {
    return toNSString(_impl->jsonString());
}
- (NSArray*)fields {
    NSMutableArray* fields = [NSMutableArray arrayWithCapacity:_impl->fields().size()];
    for (const auto& field : _impl->fields()) {
        [fields
            addObject:[[(QVXParsedField*)[QVXParsedField alloc] initWithCpp:field] autorelease]];
    }
    return fields;
}
- (NSDictionary*)fieldsByName {
    NSMutableDictionary* byName = [NSMutableDictionary dictionary];
    NSArray* fields = [self fields];
    for (NSUInteger i = 0; i < [fields count]; ++i) {
        QVXParsedField* field = [fields objectAtIndex:i];
        [byName setObject:field forKey:[field name]];
    }
    return byName;
}
- (NSArray*)fieldsWithIssues {
    NSMutableArray* fields = [NSMutableArray array];
    NSArray* all = [self fields];
    for (NSUInteger i = 0; i < [all count]; ++i) {
        QVXParsedField* field = [all objectAtIndex:i];
        if ([[field issues] count] > 0) [fields addObject:field];
    }
    return fields;
}
@end

@implementation QVXParser
+ (void)load {
    // The capture library finds this layer's resources through its bundle.
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [QVXResourceLoader addSearchBundle:[NSBundle bundleForClass:self]];
    [pool release];
}
+ (QVXParser*)parserForContext:(QVXTrovaneContext*)context
                        format:(QVXParserDataFormat)format
                         error:(NSError**)error {
    requireArgument(context, "context");
    auto created = qvx::Parser::create([context cppImpl], qvx::coreFormatFromHost(format));
    if (!created) {
        // A format of the table that this build does not parse yet.
        setError(error, QVXParserErrorDomain, 0, describing(created.error()));
        return nil;
    }
    return [[(QVXParser*)[QVXParser alloc] initWithCpp:created.value()] autorelease];
}
+ (QVXParser*)parserFromJSONString:(NSString*)JSONString
                           context:(QVXTrovaneContext*)context
                             error:(NSError**)error {
    return [[QVXParserDeserializer parserDeserializer] parserFromJSONString:JSONString
                                                                    context:context
                                                                      error:error];
}
- (id)initWithCpp:(std::shared_ptr<qvx::Parser>)impl {
    if ((self = [super init]) != nil) _impl = std::move(impl);
    return self;
}
- (std::shared_ptr<void>)typeErasedCppImpl {
    return _impl;
}
- (std::shared_ptr<qvx::Parser>)cppImpl {
    return _impl;
}
- (NSString*)componentId {
    return toNSString(_impl->getComponentId());
}
- (QVXParsedData*)parseString:(NSString*)string error:(NSError**)error {
    requireArgument(string, "string");
    NSData* bytes = [string dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:NO];
    if (bytes == nil) return nil;
    return [self parseRawData:bytes error:error];
}
- (QVXParsedData*)parseRawData:(NSData*)data error:(NSError**)error {
    requireArgument(data, "data");
    const std::string bytes(static_cast<const char*>([data bytes]), [data length]);
    auto outcome = _impl->parse(bytes);
    if (outcome.ok())
        return [[(QVXParsedData*)[QVXParsedData alloc] initWithCpp:outcome.value()] autorelease];
    const auto& issue = *outcome.error();
    NSMutableDictionary* info = infoDictionary(issue);
    [info setObject:toNSString(issue.message) forKey:NSLocalizedDescriptionKey];
    // Unlike QVXParserIssue.code, the error carries the code unfiltered.
    setError(error, QVXParserIssueErrorDomain, static_cast<NSInteger>(issue.code), info);
    return nil;
}
- (BOOL)setOptions:(NSDictionary*)options error:(NSError**)error {
    requireArgument(options, "options");
    NSData* json = [NSJSONSerialization dataWithJSONObject:options options:0 error:error];
    if (json == nil) return NO;
    NSString* text = [[[NSString alloc] initWithData:json
                                            encoding:NSUTF8StringEncoding] autorelease];
    auto set = _impl->setOptions(toStdString(text));
    if (set) return YES;
    setError(error, QVXParserErrorDomain, 0, describing(set.error()));
    return NO;
}
- (BOOL)updateFromJSONString:(NSString*)JSONString error:(NSError**)error {
    NSError* failure = nil;
    [[QVXParserDeserializer parserDeserializer] updateParser:self
                                              fromJSONString:JSONString
                                                       error:&failure];
    if (error != nullptr) *error = failure;
    return failure == nil;
}
@end

namespace qvx::objc {

// Makes parsers for the core deserializer the way a host does: through the
// host's format values, so that dlid, mrtd and us_usid abort.
class HostParserHelper : public ParserDeserializerHelper {
  public:
    std::shared_ptr<Parser> createParser(const std::shared_ptr<core::Context>& context,
                                         ParserDataFormat format) override {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        QVXTrovaneContext* host =
            [[(QVXTrovaneContext*)[QVXTrovaneContext alloc] initWithCpp:context] autorelease];
        QVXParser* made = [QVXParser parserForContext:host
                                               format:hostFormatFromCore(format)
                                                error:nullptr];
        std::shared_ptr<Parser> parser = made == nil ? nullptr : [made cppImpl];
        [pool release];
        return parser;
    }
    void applySettings(const std::shared_ptr<Parser>& /*parser*/,
                       const std::shared_ptr<core::JsonValue>& /*json*/) override {}
};

// Tells a host delegate what the core deserializer does. Holds the delegate
// and the owning host deserializer without retaining them.
class ParserDeserializerListenerProxy : public ParserDeserializerListener {
  public:
    ParserDeserializerListenerProxy(id<QVXParserDeserializerDelegate> delegate,
                                    QVXParserDeserializer* owner)
        : delegate_(delegate), owner_(owner) {}

    void onParserDeserializationStarted(const std::shared_ptr<ParserDeserializer>& /*unused*/,
                                        const std::shared_ptr<Parser>& parser,
                                        const std::shared_ptr<core::JsonValue>& json) override {
        tell(parser, json, true);
    }
    void onParserDeserializationFinished(const std::shared_ptr<ParserDeserializer>& /*unused*/,
                                         const std::shared_ptr<Parser>& parser,
                                         const std::shared_ptr<core::JsonValue>& json) override {
        tell(parser, json, false);
    }

  private:
    void tell(const std::shared_ptr<Parser>& parser, const std::shared_ptr<core::JsonValue>& json,
              bool started) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        QVXParser* hostParser = [[(QVXParser*)[QVXParser alloc] initWithCpp:parser] autorelease];
        QVXJSONValue* value = [[(QVXJSONValue*)[QVXJSONValue alloc] initWithCpp:json] autorelease];
        if (started) {
            [delegate_ parserDeserializer:owner_
                didStartDeserializingParser:hostParser
                              fromJSONValue:value];
        } else {
            [delegate_ parserDeserializer:owner_
                didFinishDeserializingParser:hostParser
                               fromJSONValue:value];
        }
        [pool release];
    }

    id<QVXParserDeserializerDelegate> delegate_;
    QVXParserDeserializer* owner_;
};

// One proxy per delegate, so that setting a delegate again reuses its proxy.
class ListenerCache {
  public:
    std::shared_ptr<ParserDeserializerListenerProxy> proxyFor(
        id<QVXParserDeserializerDelegate> delegate, QVXParserDeserializer* owner) {
        std::lock_guard<std::mutex> lock(mutex_);
        auto& proxy = proxies_[static_cast<const void*>(delegate)];
        if (!proxy) proxy = std::make_shared<ParserDeserializerListenerProxy>(delegate, owner);
        return proxy;
    }

  private:
    std::mutex mutex_;
    std::map<const void*, std::shared_ptr<ParserDeserializerListenerProxy>> proxies_;
};

}  // namespace qvx::objc

@implementation QVXParserDeserializer
+ (QVXParserDeserializer*)parserDeserializer {
    return [[[self alloc] init] autorelease];
}
- (id)init {
    return [self initWithCpp:qvx::ParserDeserializer::create(
                                 std::make_shared<qvx::objc::HostParserHelper>())];
}
- (id)initWithCpp:(std::shared_ptr<qvx::ParserDeserializer>)impl {
    if ((self = [super init]) != nil) {
        _impl = std::move(impl);
        _listenerCache = std::make_unique<qvx::objc::ListenerCache>();
        _delegate = nil;
    }
    return self;
}
- (std::shared_ptr<void>)typeErasedCppImpl {
    return _impl;
}
- (QVXParser*)parserFromJSONString:(NSString*)JSONString
                           context:(QVXTrovaneContext*)context
                             error:(NSError**)error {
    requireArgument(JSONString, "JSONString");
    requireArgument(context, "context");
    try {
        auto parser = _impl->parserFromJsonString([context cppImpl], toStdString(JSONString));
        return [[(QVXParser*)[QVXParser alloc] initWithCpp:parser] autorelease];
    } catch (const std::exception& e) {
        if (error != nullptr) {
            *error = qvx::convertExceptionToNSError(e, QVXParserDeserializerErrorDomain);
        }
    }
    return nil;
}
- (QVXParser*)updateParser:(QVXParser*)parser
            fromJSONString:(NSString*)JSONString
                     error:(NSError**)error {
    requireArgument(parser, "parser");
    requireArgument(JSONString, "JSONString");
    try {
        _impl->updateParserFromJsonString([parser cppImpl], toStdString(JSONString));
        return parser;
    } catch (const std::exception& e) {
        if (error != nullptr) {
            *error = qvx::convertExceptionToNSError(e, QVXParserDeserializerErrorDomain);
        }
    }
    return nil;
}
- (id<QVXParserDeserializerDelegate>)delegate {
    return _delegate;
}
- (void)setDelegate:(id<QVXParserDeserializerDelegate>)delegate {
    _delegate = delegate;
    if (delegate == nil) {
        _impl->setListener(nullptr);
    } else {
        _impl->setListener(_listenerCache->proxyFor(delegate, self));
    }
}
- (NSArray*)warnings {
    NSMutableArray* texts = [NSMutableArray array];
    for (const auto& text : _impl->getWarnings()) [texts addObject:toNSString(text)];
    return texts;
}
@end
