// Tests of the Objective-C classes: conversions of results, issues and
// errors, the format mapping and its abort, and the deserializer with its
// delegate. Every test body runs in an autorelease pool.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/objc/QVXParser.h"

// GNUstep and its runtime keep class tables, constant strings and per-thread
// data until the process ends, and they allocate every object too. The leak
// checker of sanitizer builds is told to pass over what they allocate, so it
// guards the C++ side only: a leaked wrapper, and what it holds, goes unseen.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\nleak:libgnustep-base.so\n";
}

namespace {

class Pool {
  public:
    Pool() : pool_([[NSAutoreleasePool alloc] init]) {}
    ~Pool() { [pool_ release]; }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

  private:
    NSAutoreleasePool* pool_;
};

std::string str(NSString* text) {
    return text == nil ? "(nil)" : [text UTF8String];
}

NSString* ns(const std::string& text) {
    return [NSString stringWithUTF8String:text.c_str()];
}

QVXParser* makeParser(QVXParserDataFormat format) {
    return [QVXParser parserForContext:[QVXTrovaneContext context] format:format error:nullptr];
}

const std::string kSwiss200 =
    "SPC\n0200\n1\nCH6630808001234567890\nS\nBergbahnen Alpenblick AG\nTalstrasse\n12\n3818\n"
    "Grindelwald\nCH\n\n\n\n\n\n\n\n249.50\nCHF\nS\nAnna Muster\nSeeweg\n5a\n8800\nThalwil\nCH\n"
    "QRR\n000000000000000000001234565\nSaisonkarte 2024/25\nEPD";

TEST(ObjcConstants, TextsAreTheDocumentedOnes) {
    const std::vector<std::pair<NSString*, std::string>> constants = {
        {QVXParserErrorDomain, "QVXParserErrorDomain"},
        {QVXParserIssueErrorDomain, "QVXParserIssueErrorDomain"},
        {QVXParserDeserializerErrorDomain, "QVXParserDeserializerErrorDomain"},
        {QVXParserIssueStartingCharactersErrorUserInfoKey,
         "QVXParserIssueStartingCharactersErrorKey"},
        {QVXParserIssueVersionErrorUserInfoKey, "QVXParserIssueVersionErrorKey"},
        {QVXParserIssueMinimalVersionErrorUserInfoKey, "QVXParserIssueMinimalVersionErrorKey"},
        {QVXParserIssueElementNameErrorUserInfoKey, "QVXParserIssueElementNameErrorKey"},
        {QVXParserIssueStringErrorUserInfoKey, "QVXParserIssueStringErrorKey"},
        {QVXParserIssueLengthErrorUserInfoKey, "QVXParserIssueLengthErrorKey"},
        {QVXParserIssueCharsetErrorUserInfoKey, "QVXParserIssueCharsetErrorKey"},
    };
    for (const auto& [constant, text] : constants) EXPECT_EQ(str(constant), text);
}

TEST(ObjcFormats, HostValuesMapBothWays) {
    const std::vector<std::pair<QVXParserDataFormat, ParserDataFormat>> hostToCore = {
        {0, ParserDataFormat::Gs1Ai},    {1, ParserDataFormat::Hibc},
        {2, ParserDataFormat::SwissQr},  {3, ParserDataFormat::Vin},
        {4, ParserDataFormat::IataBcbp}, {5, ParserDataFormat::Gs1DigitalLink},
        {6, ParserDataFormat::Gs1Ai},    {99, ParserDataFormat::Gs1Ai},
        {-1, ParserDataFormat::Gs1Ai},
    };
    for (const auto& [host, core] : hostToCore) {
        EXPECT_EQ(qvx::coreFormatFromHost(host), core) << host;
        if (host >= 0 && host <= 5) {
            EXPECT_EQ(qvx::hostFormatFromCore(core), host);
        }
    }
    EXPECT_EQ(qvx::hostFormatFromCore(static_cast<ParserDataFormat>(9)), 0);
}

TEST(ObjcFormatsDeathTest, FormatsWithoutHostValueAbort) {
    for (auto format : {ParserDataFormat::Dlid, ParserDataFormat::Mrtd, ParserDataFormat::UsUsid}) {
        EXPECT_DEATH(qvx::hostFormatFromCore(format), "") << static_cast<int>(format);
    }
    // The one road there from a host: a description naming such a format.
    EXPECT_DEATH(
        {
            Pool pool;
            [QVXParser parserFromJSONString:@"{\"type\":\"parser\",\"dataFormat\":\"mrtd\"}"
                                    context:[QVXTrovaneContext context]
                                      error:nullptr];
        },
        "");
}

TEST(ObjcParser, FieldsMirrorTheJsonText) {
    Pool pool;
    QVXParser* parser = makeParser(QVXParserDataFormatGs1Ai);
    NSError* error = nil;
    ASSERT_TRUE([parser setOptions:[NSDictionary dictionaryWithObject:[NSNumber numberWithBool:NO]
                                                               forKey:@"strictMode"]
                             error:&error]);
    QVXParsedData* data = [parser parseString:@"010950110153000417270630" error:&error];
    ASSERT_NE(data, nil);
    EXPECT_EQ(error, nil);

    NSArray* json = [NSJSONSerialization
        JSONObjectWithData:[[data jsonString] dataUsingEncoding:NSUTF8StringEncoding]
                   options:0
                     error:nullptr];
    ASSERT_EQ([[data fields] count], [json count]);
    for (NSUInteger i = 0; i < [json count]; ++i) {
        QVXParsedField* field = [[data fields] objectAtIndex:i];
        NSDictionary* expected = [json objectAtIndex:i];
        EXPECT_TRUE([[field name] isEqual:[expected objectForKey:@"name"]]);
        EXPECT_TRUE([[field rawString] isEqual:[expected objectForKey:@"rawString"]]);
        EXPECT_TRUE([[field parsed] isEqual:[expected objectForKey:@"parsed"]]) << i;
        NSArray* issues = [expected objectForKey:@"issues"];
        EXPECT_TRUE([[field issues] isEqual:(issues == nil ? [NSArray array] : issues)]);
    }
    ASSERT_EQ([[data fieldsWithIssues] count], 1u);
    QVXParsedField* flagged = [[data fieldsWithIssues] objectAtIndex:0];
    EXPECT_EQ(str([flagged name]), "01");
    EXPECT_EQ([[[flagged warnings] objectAtIndex:0] code], 2);
    EXPECT_EQ(str([[[data fieldsByName] objectForKey:@"17"] rawString]), "270630");
}

TEST(ObjcParser, RefusalsBecomeIssueErrors) {
    struct Case {
        QVXParserDataFormat format;
        std::string data;
        NSDictionary* options;
        NSInteger code;
        std::string message;
        std::vector<std::pair<NSString*, std::string>> info;
    };
    Pool pool;
    const std::vector<Case> cases = {
        {QVXParserDataFormatSwissQr,
         "XYZ1234567",
         nil,
         1003,
         "Code should start with 'SPC' but starts with 'XYZ' string.",
         {{QVXParserIssueStartingCharactersErrorUserInfoKey, "XYZ"}}},
        {QVXParserDataFormatSwissQr,
         kSwiss200,
         [NSDictionary dictionaryWithObject:[NSNumber numberWithInt:210] forKey:@"minimalVersion"],
         1005,
         "Version 200 is not supported.",
         {{QVXParserIssueVersionErrorUserInfoKey, "200"},
          {QVXParserIssueMinimalVersionErrorUserInfoKey, "210"}}},
        {QVXParserDataFormatVin,
         "1HGCM82633A00435\xff",
         nil,
         2,
         "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')",
         {}},
    };
    for (const auto& c : cases) {
        QVXParser* parser = makeParser(c.format);
        if (c.options != nil) {
            ASSERT_TRUE([parser setOptions:c.options error:nullptr]);
        }
        NSError* error = nil;
        NSData* bytes = [NSData dataWithBytes:c.data.data() length:c.data.size()];
        EXPECT_EQ([parser parseRawData:bytes error:&error], nil);
        ASSERT_NE(error, nil) << c.message;
        EXPECT_EQ(str([error domain]), "QVXParserIssueErrorDomain");
        EXPECT_EQ([error code], c.code);
        EXPECT_EQ(str([error localizedDescription]), c.message);
        EXPECT_EQ([[error userInfo] count], c.info.size() + 1);
        for (const auto& [key, value] : c.info) {
            EXPECT_EQ(str([[error userInfo] objectForKey:key]), value) << str(key);
        }
    }
}

TEST(ObjcParser, IssueCodesOutsideTheKnownSetReadZero) {
    Pool pool;
    const std::vector<std::pair<int, NSInteger>> codes = {
        {2, 2}, {1000, 1000}, {1013, 1013}, {1014, 0}, {999, 0}, {0, 0}, {7, 0}};
    for (const auto& [core, host] : codes) {
        auto issue = std::make_shared<parser::ParserIssue>("x", static_cast<ParserIssueCode>(core));
        QVXParserIssue* wrapped =
            [[(QVXParserIssue*)[QVXParserIssue alloc] initWithCpp:issue] autorelease];
        EXPECT_EQ([wrapped code], host) << core;
    }
}

TEST(ObjcParser, OptionFailuresAreParserErrors) {
    Pool pool;
    QVXParser* parser = makeParser(QVXParserDataFormatVin);
    NSError* error = nil;
    EXPECT_FALSE([parser setOptions:[NSDictionary dictionaryWithObject:[NSNumber numberWithBool:YES]
                                                                forKey:@"strict_mode"]
                              error:&error]);
    ASSERT_NE(error, nil);
    EXPECT_EQ(str([error domain]), "QVXParserErrorDomain");
    EXPECT_EQ([error code], 0);
    EXPECT_EQ(str([error localizedDescription]), "invalid option: strict_mode");
}

TEST(ObjcParserDeathTest, NilArgumentsAbort) {
    EXPECT_DEATH(
        {
            Pool pool;
            [makeParser(QVXParserDataFormatVin) parseString:nil error:nullptr];
        },
        "");
    EXPECT_DEATH([QVXParser parserForContext:nil format:0 error:nullptr], "");
}

}  // namespace

@interface RecordingDelegate : NSObject <QVXParserDeserializerDelegate> {
  @public
    std::vector<std::string> calls;
}
@end

@implementation RecordingDelegate
- (void)parserDeserializer:(QVXParserDeserializer*)deserializer
    didStartDeserializingParser:(QVXParser*)parser
                  fromJSONValue:(QVXJSONValue*)value {
    calls.push_back("start " + str([parser componentId]) + " " + str([value JSONString]) +
                    ([deserializer delegate] == self ? " (own)" : ""));
}
- (void)parserDeserializer:(QVXParserDeserializer*)deserializer
    didFinishDeserializingParser:(QVXParser*)parser
                   fromJSONValue:(QVXJSONValue*)value {
    calls.push_back("finish " + str([parser componentId]) + " " + str([value absolutePath]));
    (void)deserializer;
}
@end

namespace {

TEST(ObjcDeserializer, DescribedParsersTellTheDelegate) {
    Pool pool;
    RecordingDelegate* delegate = [[[RecordingDelegate alloc] init] autorelease];
    QVXParserDeserializer* deserializer = [QVXParserDeserializer parserDeserializer];
    [deserializer setDelegate:delegate];
    [deserializer setDelegate:delegate];  // the same proxy again: told once per event
    NSError* error = nil;
    QVXParser* parser = [deserializer
        parserFromJSONString:@"{\"type\":\"parser\",\"dataFormat\":\"vin\",\"id\":\"v1\","
                             @"\"extra\":1}"
                     context:[QVXTrovaneContext context]
                       error:&error];
    ASSERT_NE(parser, nil) << str([error localizedDescription]);
    EXPECT_EQ(str([parser componentId]), "v1");
    const std::vector<std::string> expected = {
        "start v1 {\"dataFormat\":\"vin\",\"extra\":1,\"id\":\"v1\",\"type\":\"parser\"} (own)",
        "finish v1 /"};
    EXPECT_EQ(delegate->calls, expected);
    EXPECT_TRUE([[deserializer warnings] isEqual:[NSArray arrayWithObject:@"/extra was not used."]])
        << str([[deserializer warnings] description]);
    [deserializer setDelegate:nil];
}

TEST(ObjcDeserializer, FailuresBecomeDeserializerErrors) {
    struct Case {
        std::string json;
        std::string message;
    };
    Pool pool;
    const std::vector<Case> cases = {
        {"{\"type\":\"parser\",\"dataFormat\":\"pdf417\"}", "Can't find appropriate enum value"},
        {"{\"type\":\"parser\",\"dataFormat\":\"hibc\"}", ""},  // updates of another format
        {"{\"type\":\"parser\",\"dataFormat\":\"vin\",\"options\":{\"nope\":true}}",
         "invalid option: nope"},
    };
    QVXParser* vin = makeParser(QVXParserDataFormatVin);
    for (const auto& c : cases) {
        NSError* error = nil;
        const BOOL updated = [vin updateFromJSONString:ns(c.json) error:&error];
        EXPECT_FALSE(updated) << c.json;
        ASSERT_NE(error, nil);
        EXPECT_EQ(str([error domain]), "QVXParserDeserializerErrorDomain");
        EXPECT_EQ([error code], 0);
        if (!c.message.empty()) {
            EXPECT_EQ(str([error localizedDescription]), c.message);
        }
    }
    NSError* error = nil;
    EXPECT_TRUE([vin updateFromJSONString:@"{\"type\":\"parser\",\"dataFormat\":\"vin\","
                                          @"\"options\":{\"strictMode\":true}}"
                                    error:&error]);
    EXPECT_EQ([vin cppImpl]->optionsToJSON()["strict_mode"], true);
}

// The leak checker cannot see a wrapper that is never released (see the
// suppressions above), but the core object it holds outlives it then.
TEST(ObjcMemory, ReleasedWrappersLetGoOfTheirCoreObjects) {
    std::vector<std::pair<std::string, std::weak_ptr<void>>> held;
    {
        Pool pool;
        QVXParser* parser = makeParser(QVXParserDataFormatHibc);
        QVXParsedData* data = [parser parseString:@"+H123GLOVE5/$$3270630LOT8841/16D20240630D"
                                            error:nullptr];
        ASSERT_NE(data, nil);
        QVXParsedField* field = [[data fields] objectAtIndex:0];
        QVXParserIssue* issue = [[(QVXParserIssue*)[QVXParserIssue alloc]
            initWithCpp:std::make_shared<parser::ParserIssue>("message")] autorelease];
        (void)[data fieldsByName];
        (void)[field warnings];

        RecordingDelegate* delegate = [[[RecordingDelegate alloc] init] autorelease];
        QVXParserDeserializer* deserializer = [QVXParserDeserializer parserDeserializer];
        [deserializer setDelegate:delegate];
        QVXParser* described =
            [deserializer parserFromJSONString:@"{\"type\":\"parser\",\"dataFormat\":\"vin\"}"
                                       context:[QVXTrovaneContext context]
                                         error:nullptr];
        ASSERT_NE(described, nil);
        ASSERT_EQ(delegate->calls.size(), 2U);

        held = {{"parser", [parser typeErasedCppImpl]},
                {"parsed data", [data typeErasedCppImpl]},
                {"field", [field typeErasedCppImpl]},
                {"issue", [issue typeErasedCppImpl]},
                {"deserializer", [deserializer typeErasedCppImpl]},
                {"described parser", [described typeErasedCppImpl]}};
    }
    for (const auto& [what, weak] : held) EXPECT_TRUE(weak.expired()) << what;
}

TEST(ObjcLoading, TheLayerRegistersItsBundle) {
    Pool pool;
    EXPECT_TRUE([[QVXResourceLoader searchBundles]
        containsObject:[NSBundle bundleForClass:[QVXParser class]]]);
}

}  // namespace
