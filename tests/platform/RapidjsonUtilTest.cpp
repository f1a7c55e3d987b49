#include <memory>

#include <gtest/gtest.h>

#include "Utils/RapidjsonUtil.h"

namespace Utils::RapidjsonUtil {

class RapidjsonUtilTest : public ::testing::Test {
protected:
    rapidjson::Document& parse(const std::string& json) {
        document = rapidjson::Document();
        document.Parse<jsonParseFlags>(json.c_str());
        EXPECT_FALSE(document.HasParseError()) << json;
        return document;
    }

    rapidjson::Document document;
    rapidjson::Value value{"untouched"};
    std::string text = "untouched";
    long number = 77;
};

/// Versions of the JSON library use RAPIDJSON_NEW in two ways.
TEST(JsonMemory, IsAllocatedInSmallChunksForBothVersionsOfTheLibrary) {
    using Pool = rapidjson::MemoryPoolAllocator<>;
    const std::unique_ptr<Pool> older(RAPIDJSON_NEW(Pool()));
    const std::unique_ptr<Pool> newer(RAPIDJSON_NEW(Pool)());
    for (auto* pool : {older.get(), newer.get()}) {
        pool->Malloc(1);
        EXPECT_EQ(pool->Capacity(), jsonChunkSize);
    }
    const std::unique_ptr<rapidjson::CrtAllocator> base(RAPIDJSON_NEW(rapidjson::CrtAllocator()));
    EXPECT_NE(base, nullptr);
}

TEST(JsonMemory, OfASmallObjectIsOneChunkOnEveryProcessor) {
    rapidjson::Document document(rapidjson::kObjectType);
    auto& pool = document.GetAllocator();
    for (const auto* name : {"settingDBId", "from", "to"}) {
        document.AddMember(rapidjson::StringRef(name), rapidjson::Value("sixteen letters.", pool), pool);
    }
    EXPECT_EQ(pool.Capacity(), jsonChunkSize);
}

TEST_F(RapidjsonUtilTest, FindsMembersOfTheNamedType) {
    parse(R"({"object":{"a":1},"array":[1,2],"string":"a\u0000b","number":-5})");
    EXPECT_TRUE(tryGetObjectMember(document, "object", value));
    EXPECT_EQ(stringify(value), R"({"a":1})");
    EXPECT_TRUE(tryGetValueArrayMember(document, "array", value));
    EXPECT_EQ(stringify(value), "[1,2]");
    EXPECT_TRUE(tryGetStringMember(document, "string", text));
    EXPECT_EQ(text, std::string("a\0b", 3));
    EXPECT_TRUE(tryGetInt64Member(document, "number", number));
    EXPECT_EQ(number, -5);
    EXPECT_EQ(stringify(document), R"({"object":null,"array":null,"string":"a\u0000b","number":-5})") << "moved out";
}

TEST_F(RapidjsonUtilTest, MissingOrOtherTypesAnswerFalseAndLeaveTheOutput) {
    for (const auto* json : {"{}", R"({"m":null})", R"({"m":true})", R"({"M":{}})"}) {
        parse(json);
        EXPECT_FALSE(tryGetObjectMember(document, "m", value));
        EXPECT_FALSE(tryGetValueArrayMember(document, "m", value));
        EXPECT_FALSE(tryGetStringMember(document, "m", text));
        EXPECT_FALSE(tryGetInt64Member(document, "m", number));
    }
    EXPECT_FALSE(tryGetObjectMember(parse(R"({"m":[]})"), "m", value));
    EXPECT_FALSE(tryGetValueArrayMember(parse(R"({"m":{}})"), "m", value));
    EXPECT_FALSE(tryGetStringMember(parse(R"({"m":5})"), "m", text));
    EXPECT_STREQ(value.GetString(), "untouched");
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(number, 77);
}

TEST_F(RapidjsonUtilTest, AValueThatIsNotAnObjectHasNoMembers) {
    for (const auto* json : {"[]", "[{\"m\":1}]", "5", "\"m\"", "null", "true"}) {
        parse(json);
        EXPECT_FALSE(tryGetObjectMember(document, "m", value)) << json;
        EXPECT_FALSE(tryGetValueArrayMember(document, "m", value)) << json;
        EXPECT_FALSE(tryGetStringMember(document, "m", text)) << json;
        EXPECT_FALSE(tryGetInt64Member(document, "m", number)) << json;
    }
}

TEST_F(RapidjsonUtilTest, IntegersMustFitAndBeIntegers) {
    EXPECT_TRUE(tryGetInt64Member(parse(R"({"m":9223372036854775807})"), "m", number));
    EXPECT_EQ(number, 9223372036854775807L);
    EXPECT_TRUE(tryGetInt64Member(parse(R"({"m":-9223372036854775808})"), "m", number));
    EXPECT_EQ(number, -9223372036854775807L - 1);
    for (const auto* json : {R"({"m":9223372036854775808})", R"({"m":1.0})", R"({"m":1e3})", R"({"m":"5"})",
                             R"({"m":18446744073709551616})"}) {
        EXPECT_FALSE(tryGetInt64Member(parse(json), "m", number)) << json;
    }
}

TEST_F(RapidjsonUtilTest, KeysAreComparedWholeAndTheFirstCounts) {
    parse(R"({"m\u0000":"with NUL","m":"first","m":"second"})");
    EXPECT_TRUE(tryGetStringMember(document, "m", text));
    EXPECT_EQ(text, "first");
    EXPECT_TRUE(tryGetStringMember(document, std::string("m\0", 2), text));
    EXPECT_EQ(text, "with NUL");
}

TEST_F(RapidjsonUtilTest, RendersCompactly) {
    EXPECT_EQ(stringify(parse(R"( { "a" : [ 1 , "x" , null , true , { } ] } )")), R"({"a":[1,"x",null,true,{}]})");
    EXPECT_EQ(stringifyVector({}), "[]");
    EXPECT_EQ(stringifyVector({"en-US", "a\"b", std::string("\0", 1), "é"}),
              "[\"en-US\",\"a\\\"b\",\"\\u0000\",\"é\"]");
}

TEST(RapidjsonUtilDeathTest, AFailedPreconditionEndsTheProcess) {
    const rapidjson::Value object(rapidjson::kObjectType);
    EXPECT_DEATH(static_cast<void>(object.GetArray()), "JSON precondition failed: IsArray\\(\\)");
}

}  // namespace Utils::RapidjsonUtil
