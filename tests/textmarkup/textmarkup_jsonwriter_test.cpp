#include "textmarkup_jsonwriter.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using textmarkup::JsonWriter;

TEST(JsonWriter, WritesEachKindOfValue) {
    JsonWriter writer;
    writer.openObject();
    writer.member("text", "Größe \"\\/\b\f\n\r\t\x1F\x7F</script>\xFF");
    writer.openArray("numbers");
    writer.value(-7);
    writer.value(std::numeric_limits<int64_t>::min());
    writer.value(std::numeric_limits<uint64_t>::max());
    writer.value(0.1);
    writer.value(1e300);
    writer.value(std::numeric_limits<double>::infinity());
    writer.close();
    writer.openObject("object");
    writer.member("", true);
    writer.member("", nullptr);
    EXPECT_EQ(writer.finish(),
              "{\"text\":\"Größe \\\"\\\\/\\b\\f\\n\\r\\t\\u001f\x7F\\u003c/script>\uFFFD\","
              "\"numbers\":[-7,-9223372036854775808,18446744073709551615,0.1,1e+300,null],"
              "\"object\":{\"\":true,\"\":null}}");
    EXPECT_EQ(writer.finish(), "null");
}

TEST(JsonWriter, StaysWellFormedInWhateverOrder) {
    JsonWriter writer;
    writer.close();
    writer.openArray("name");
    writer.member("name", 1);
    writer.openObject();
    writer.value(2);
    writer.openArray();
    for (int i = 0; i < 4; ++i)
        writer.close();
    writer.value(3);
    writer.openObject();
    EXPECT_EQ(writer.finish(), "[1,{\"\":2,\"\":[]}]");
}

} // namespace
