// Which flavours are asked for and offered, whatever the display system.
#include "platform/ClipboardOffer.h"
#include "platform/ClipboardReadPlan.h"

#include "base/FilePath.h"
#include "base/ImageDecoding.h"
#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <map>

namespace corvatto {
namespace {

const QByteArray png = Image(QImage(3, 2, QImage::Format_ARGB32)).pngData();
const QByteArray file = "file:///a.txt\r\nfile:///b.txt\r\n";

using Names = QByteArrayList;
using Flavours = std::map<QByteArray, QByteArray>;

// An owner whose flavours are as given, or which refuses what is null. Returns what it is asked for, in
// order.
Names asked(const Flavours& owner, ClipboardContent* read = nullptr,
            TransferOutcome failure = TransferOutcome::refused) {
    const ClipboardReadLimits limits;
    Names offered, requests;
    for (const auto& [target, bytes] : owner) {
        offered.append(target);
    }
    ClipboardReadPlan plan(offered, limits);
    while (const auto request = plan.nextRequest()) {
        requests.append(request->target);
        const QByteArray& bytes = owner.at(request->target);
        plan.answered(bytes.isNull() ? failure : TransferOutcome::complete, bytes);
        if (request->kind == ClipboardReadPlan::Kind::image && !bytes.isNull()) {
            plan.imageDecoded(bytes, bytes == png);
        }
    }
    if (read != nullptr) {
        *read = plan.content();
    }
    return requests;
}

TEST(ClipboardReadPlan, AsksForFilesBeforeAnImageAndForTheBestOfEachKind) {
    EXPECT_EQ(asked({{"TARGETS", ""}, {"text/html", ""}}), Names());
    EXPECT_EQ(asked({{"STRING", ""}, {"UTF8_STRING", ""}, {"text/plain", ""}}), Names({"UTF8_STRING"}));
    EXPECT_EQ(asked({{"image/bmp", png}, {"image/tiff", png}, {"image/png", png}, {"text/plain", "x"}}),
              Names({"image/png", "text/plain"}));
    EXPECT_EQ(asked({{"image/x-MS-bmp", png}}), Names({"image/x-MS-bmp"}));
    EXPECT_EQ(asked({{"image/x-bmp", png}}), Names({"image/x-bmp"}));
    // Beside files an image is their icon.
    EXPECT_EQ(asked({{"text/uri-list", file}, {"image/png", png}}), Names({"text/uri-list"}));
    EXPECT_EQ(asked({{"text/uri-list", "https://example.org\r\n"}, {"image/png", png}}),
              Names({"text/uri-list", "image/png"}));
}

TEST(ClipboardReadPlan, TellsACutWithoutPastingIt) {
    const QByteArray general = "text/uri-list", mark = "application/x-kde-cutselection",
                     list = "x-special/gnome-copied-files";
    ClipboardContent read;
    // Of those that offer the mark, some take a reading of the list for the paste.
    EXPECT_EQ(asked({{general, file}, {mark, "1"}, {list, "cut\n" + file}}, &read), Names({general, mark}));
    EXPECT_TRUE(read.filesAreCut);
    EXPECT_EQ(read.fileURLs().size(), 2);
    asked({{general, file}, {mark, QByteArray()}, {list, "copy\n" + file}}, &read);
    EXPECT_FALSE(read.filesAreCut);
    EXPECT_EQ(asked({{general, file}, {list, "cut\n" + file}}, &read), Names({general, list}));
    EXPECT_TRUE(read.filesAreCut);
    EXPECT_EQ(asked({{"x-special/mate-copied-files", "copy\n" + file}, {mark, "1"}}, &read),
              Names({mark, "x-special/mate-copied-files"}));
    EXPECT_EQ(read.fileURLs().size(), 2);
}

TEST(ClipboardReadPlan, NeverAsksForASecret) {
    const QByteArray hint = ClipboardReadPlan::secrecyHintTarget;
    EXPECT_EQ(asked({{"UTF8_STRING", "hunter2"}, {hint, "secret"}}), Names({hint}));
    EXPECT_EQ(asked({{"UTF8_STRING", "hunter2"}, {hint, QByteArray()}}), Names({hint})) << "cannot be read";
    EXPECT_EQ(asked({{"UTF8_STRING", "hunted"}, {hint, "public"}}), Names({hint, "UTF8_STRING"}));
}

TEST(ClipboardReadPlan, ReadsTheNextFlavourWhenOneFails) {
    test::CapturedOutput output;
    ClipboardContent read;
    asked({{"image/png", png.chopped(9)}, {"image/tiff", QByteArray()}, {"image/jpeg", png}}, &read);
    EXPECT_EQ(read.imageType, "image/jpeg");
    EXPECT_EQ(output.text(), "[Pasteboard] ERROR: image/png of " + QByteArray::number(png.size() - 9) +
                                 " bytes is not a readable image.\n");
    asked({{"UTF8_STRING", QByteArray()}, {"STRING", "x"}}, &read);
    EXPECT_EQ(read.textTarget, "STRING");
    // The same text in another encoding would be as late.
    EXPECT_EQ(asked({{"UTF8_STRING", QByteArray()}, {"STRING", "x"}}, &read, TransferOutcome::timedOut),
              Names({"UTF8_STRING"}));
}

// A drawing of formatted text is no picture, and pasting it would be no text.
TEST(ClipboardReadPlan, TellsPicturesFromDrawingsOfText) {
    const struct {
        const char* owner;
        Names offered;
        bool isPicture;
    } cases[] = {
        {"a spreadsheet's cells", {"image/png", "text/html", "text/rtf", "text/plain"}, false},
        {"text of a writer", {"image/png", "application/rtf", "UTF8_STRING"}, false},
        {"a picture of a writer", {"image/png", "text/rtf"}, true},
        {"a browser's image", {"image/png", "text/html", "UTF8_STRING"}, true},
    };
    for (const auto& [owner, offered, isPicture] : cases) {
        Flavours flavours;
        for (const QByteArray& target : offered) {
            flavours[target] = target == "image/png" ? png : "x";
        }
        EXPECT_EQ(asked(flavours).contains("image/png"), isPicture) << owner;
    }
}

Flavours offered(const ClipboardContent& content) {
    Flavours flavours;
    for (const OfferedFlavour& flavour : offeredFlavours(content)) {
        flavours[flavour.target] = flavour.bytes();
    }
    return flavours;
}

TEST(ClipboardOffer, OffersFilesToEveryFileManager) {
    auto content = ClipboardContent::ofFileURLs({fileUrl("/a b"), fileUrl("/caf\xE9")});
    EXPECT_EQ(offered(content)["text/uri-list"], "file:///a%20b\r\nfile:///caf%E9\r\n");
    EXPECT_EQ(offered(content)["x-special/gnome-copied-files"], "copy\nfile:///a%20b\nfile:///caf%E9");
    EXPECT_FALSE(offered(content).contains("application/x-kde-cutselection"));
    content.filesAreCut = true; // as when the program that cut them has exited
    EXPECT_EQ(offered(content)["x-special/mate-copied-files"], "cut\nfile:///a%20b\nfile:///caf%E9");
    EXPECT_EQ(offered(content)["application/x-kde-cutselection"], "1");
}

TEST(ClipboardOffer, ComposesTransparencyOverWhiteForFormatsThatHaveNone) {
    QImage clear(8, 8, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    const auto flavours = offered(ClipboardContent::ofImage(Image(clear)));
    for (const char* type : {"image/bmp", "image/jpeg"}) {
        EXPECT_EQ(decodeImage(flavours.at(type))->pixelColor(4, 4), QColor(Qt::white)) << type;
    }
    for (const char* type : {"image/png", "image/tiff"}) {
        EXPECT_EQ(decodeImage(flavours.at(type))->pixelColor(4, 4).alpha(), 0) << type;
    }
}

TEST(ClipboardContent, APreparedTextIsTheSameText) {
    for (const auto& [target, bytes] :
         {std::pair("UTF8_STRING", QByteArray("\xEF\xBB\xBFna\xC3\xAFve\0x", 11)),
          {"UTF8_STRING", "broken \xFF"},
          {"STRING", "na\xEFve"},
          {"text/plain;charset=utf-16le", "n\0a"},
          {"text/plain", ""}}) {
        ClipboardContent content;
        content.textTarget = target;
        content.textBytes = bytes;
        ClipboardContent prepared = content;
        prepared.prepareText();
        EXPECT_EQ(prepared.text()->utf8, content.text()->utf8) << target;
        EXPECT_EQ(prepared.text()->hadInvalidBytes, content.text()->hadInvalidBytes) << target;
        EXPECT_TRUE(prepared.isSameCopyAs(content));
        for (const OfferedFlavour& flavour : offeredFlavours(prepared)) {
            EXPECT_TRUE(flavour.target == "STRING" || flavour.bytes() == content.text()->utf8) << target;
        }
    }
}

} // namespace
} // namespace corvatto
