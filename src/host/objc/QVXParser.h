// Objective-C classes over the parser library: parser objects, their results
// and errors, and parsers described in JSON. Each class wraps one shared core
// object; nothing here parses, it only converts.
//
// Memory is managed by hand (retain/release, no ARC): the layer is also built
// by GCC's Objective-C, which has none. Factory methods and properties return
// autoreleased objects. Arguments that must not be nil abort the process when
// they are, as every contract failure of the library does.
#pragma once

#include <Foundation/Foundation.h>

#include <memory>

#include "host/objc/QVXCapture.h"
#include "qvx/parser.h"
#include "qvx/parser_deserializer.h"

// The formats a host can name. Unknown numbers mean gs1ai.
typedef NSInteger QVXParserDataFormat;
enum {
    QVXParserDataFormatGs1Ai = 0,
    QVXParserDataFormatHibc = 1,
    QVXParserDataFormatSwissQr = 2,
    QVXParserDataFormatVin = 3,
    QVXParserDataFormatIataBcbp = 4,
    QVXParserDataFormatGs1DigitalLink = 5,
};

extern NSString* const QVXParserErrorDomain;
extern NSString* const QVXParserIssueErrorDomain;
extern NSString* const QVXParserDeserializerErrorDomain;
extern NSString* const QVXParserIssueStartingCharactersErrorUserInfoKey;
extern NSString* const QVXParserIssueVersionErrorUserInfoKey;
extern NSString* const QVXParserIssueMinimalVersionErrorUserInfoKey;
extern NSString* const QVXParserIssueElementNameErrorUserInfoKey;
extern NSString* const QVXParserIssueStringErrorUserInfoKey;
extern NSString* const QVXParserIssueLengthErrorUserInfoKey;
extern NSString* const QVXParserIssueCharsetErrorUserInfoKey;

namespace qvx {

// Host to core: 1 to 5 name their formats, every other number gs1ai.
ParserDataFormat coreFormatFromHost(QVXParserDataFormat format);
// Core to host. dlid, mrtd and us_usid have no host value: asking aborts.
QVXParserDataFormat hostFormatFromCore(ParserDataFormat format);

}  // namespace qvx

@interface QVXParserIssue : NSObject {
    std::shared_ptr<parser::ParserIssue> _impl;
}
- (id)initWithCpp:(std::shared_ptr<parser::ParserIssue>)impl;
- (std::shared_ptr<void>)typeErasedCppImpl;
// 2 and 1000 to 1013 as they are; any other code reads 0.
@property(readonly) NSInteger code;
@property(readonly) NSString* message;
// NSString values under the QVXParserIssue...ErrorUserInfoKey constants.
@property(readonly) NSDictionary* additionalInfo;
@end

@interface QVXParsedField : NSObject {
    std::shared_ptr<parser::ParsedField> _impl;
}
- (id)initWithCpp:(std::shared_ptr<parser::ParsedField>)impl;
- (std::shared_ptr<void>)typeErasedCppImpl;
@property(readonly) NSString* name;
// The field's input bytes; bytes that are not UTF-8 are left out.
@property(readonly) NSString* rawString;
// The value as Foundation objects: NSString, NSNumber, NSNull, NSArray, NSDictionary.
@property(readonly) id parsed;
// The messages of the field's issues.
@property(readonly) NSArray* issues;
// The same issues as QVXParserIssue objects.
@property(readonly) NSArray* warnings;
@end

@interface QVXParsedData : NSObject {
    std::shared_ptr<parser::ParsedData> _impl;
}
- (id)initWithCpp:(std::shared_ptr<parser::ParsedData>)impl;
- (std::shared_ptr<void>)typeErasedCppImpl;
@property(readonly) NSString* jsonString;
@property(readonly) NSArray* fields;
// Keyed by name; of two fields with one name the later wins.
@property(readonly) NSDictionary* fieldsByName;
@property(readonly) NSArray* fieldsWithIssues;
@end

@interface QVXParser : NSObject {
    std::shared_ptr<qvx::Parser> _impl;
}
+ (QVXParser*)parserForContext:(QVXTrovaneContext*)context
                        format:(QVXParserDataFormat)format
                         error:(NSError**)error;
+ (QVXParser*)parserFromJSONString:(NSString*)JSONString
                           context:(QVXTrovaneContext*)context
                             error:(NSError**)error;
- (id)initWithCpp:(std::shared_ptr<qvx::Parser>)impl;
- (std::shared_ptr<void>)typeErasedCppImpl;
// The string's UTF-8 bytes; nil without an error when it has none.
- (QVXParsedData*)parseString:(NSString*)string error:(NSError**)error;
// The bytes as they are; nil and a QVXParserIssueErrorDomain error when refused.
- (QVXParsedData*)parseRawData:(NSData*)data error:(NSError**)error;
- (BOOL)setOptions:(NSDictionary*)options error:(NSError**)error;
- (BOOL)updateFromJSONString:(NSString*)JSONString error:(NSError**)error;
@property(readonly) NSString* componentId;
- (std::shared_ptr<qvx::Parser>)cppImpl;
@end

@class QVXParserDeserializer;

@protocol QVXParserDeserializerDelegate <NSObject>
- (void)parserDeserializer:(QVXParserDeserializer*)deserializer
    didStartDeserializingParser:(QVXParser*)parser
                  fromJSONValue:(QVXJSONValue*)value;
- (void)parserDeserializer:(QVXParserDeserializer*)deserializer
    didFinishDeserializingParser:(QVXParser*)parser
                   fromJSONValue:(QVXJSONValue*)value;
@end

namespace qvx::objc {
class ListenerCache;
}

@interface QVXParserDeserializer : NSObject {
    std::shared_ptr<qvx::ParserDeserializer> _impl;
    std::unique_ptr<qvx::objc::ListenerCache> _listenerCache;
    // Not retained: the delegate must be reset before it goes away.
    id<QVXParserDeserializerDelegate> _delegate;
}
+ (QVXParserDeserializer*)parserDeserializer;
- (id)initWithCpp:(std::shared_ptr<qvx::ParserDeserializer>)impl;
- (std::shared_ptr<void>)typeErasedCppImpl;
- (QVXParser*)parserFromJSONString:(NSString*)JSONString
                           context:(QVXTrovaneContext*)context
                             error:(NSError**)error;
- (QVXParser*)updateParser:(QVXParser*)parser
            fromJSONString:(NSString*)JSONString
                     error:(NSError**)error;
- (id<QVXParserDeserializerDelegate>)delegate;
- (void)setDelegate:(id<QVXParserDeserializerDelegate>)delegate;
// The description keys the last run did not use.
@property(readonly) NSArray* warnings;
@end
