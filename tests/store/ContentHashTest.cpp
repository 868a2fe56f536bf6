#include "store/ContentHash.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(ContentHash, EqualsThePublishedVectors) {
    EXPECT_EQ(sha256Hex({}), u"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256Hex("abc"), u"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256Hex("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              u"248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(sha256Hex(QByteArray(1'000'000, 'a')),
              u"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(ContentHash, OfATextIsTheHashOfItsUtf8Bytes) {
    EXPECT_EQ(sha256(u""), sha256Hex({}));
    const QString text = QStringLiteral("剪贴板 \U0001F600\0 end");
    EXPECT_EQ(sha256(text),
              sha256Hex(QByteArray("\xE5\x89\xAA\xE8\xB4\xB4\xE6\x9D\xBF \xF0\x9F\x98\x80\0 end", 19)));
    EXPECT_NE(sha256(u"\u00E9"), sha256(u"e\u0301")) << "normalized";
}

} // namespace
} // namespace corvatto
