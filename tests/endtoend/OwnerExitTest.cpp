// Content that outlives the program that copied it, and content that must not.
#include "EndToEndTest.h"

#include <QElapsedTimer>

namespace corvatto::test {

namespace {

// A clipboard manager. Asked to save, it fetches the text before it answers.
class Manager : private XConnection {
public:
    explicit Manager(const QByteArray& display) : XConnection(display), m_window(xcb_generate_id(raw())) {
        xcb_create_window(raw(), XCB_COPY_FROM_PARENT, m_window, root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(raw(), m_window, atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
        sync();
    }

    QByteArray saved;

    // Without it, the manager hangs.
    void serve() {
        while (const auto event = owned(xcb_poll_for_event(raw()))) {
            const int type = event->response_type & 0x7f;
            if (type == XCB_SELECTION_REQUEST) {
                m_request = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
                xcb_convert_selection(raw(), m_window, atom("CLIPBOARD"), atom("UTF8_STRING"),
                                      atom("FETCHED"), XCB_CURRENT_TIME);
            } else if (type == XCB_SELECTION_NOTIFY) {
                saved = property(m_window, "FETCHED");
                xcb_generic_event_t answer{};
                reinterpret_cast<xcb_selection_notify_event_t&>(answer) = {XCB_SELECTION_NOTIFY,
                                                                           0,
                                                                           0,
                                                                           m_request.time,
                                                                           m_request.requestor,
                                                                           m_request.selection,
                                                                           m_request.target,
                                                                           m_request.property};
                xcb_send_event(raw(), 0, m_request.requestor, 0, reinterpret_cast<const char*>(&answer));
            }
        }
        xcb_flush(raw());
    }

private:
    xcb_window_t m_window;
    xcb_selection_request_event_t m_request{};
};

class OwnerExitTest : public EndToEndTest {
protected:
    // Ends the program that copied, and waits until somebody else offers the content.
    bool soonOfferedAgain() {
        owner.reset();
        return soon([this] { return x.clipboardOwner() != XCB_NONE; });
    }

    // What would be offered again is by then: the program has had many turns of its event loop since it has
    // heard of the owner's end.
    bool isGone() {
        owner.reset();
        hidePanel();
        showPanel();
        return x.clipboardOwner() == XCB_NONE;
    }
};

} // namespace

TEST_F(OwnerExitTest, TextImagesAndFilesRemain) {
    const QImage image = testImage({300, 200});
    const QByteArray file = desktop.writeFile("kept file.txt", "x");
    launch();
    copyText("kept\r\n文");
    ASSERT_TRUE(soonStored("kept\r\n文"));
    ASSERT_TRUE(soonOfferedAgain());
    EXPECT_EQ(paste(), "kept\r\n文");

    copy({{"image/png", encoded(image, "png")}});
    ASSERT_TRUE(soon([this] { return database.rows().size() == 2; }));
    ASSERT_TRUE(soonOfferedAgain());
    EXPECT_EQ(decoded(paste("image/png").value_or("")), image);

    copy({{"text/uri-list", fileUrl(file) + "\r\n"}});
    ASSERT_TRUE(soonStored(file));
    ASSERT_TRUE(soonOfferedAgain());
    EXPECT_EQ(paste("text/uri-list").value_or("").trimmed(), fileUrl(file));

    const auto rows = rowsAfterNextCopy();
    EXPECT_EQ(rows.size(), 3);
    for (const auto& row : rows) {
        EXPECT_EQ(row.copyCount, 1) << row.content.constData(); // offering again is no copy
    }
}

TEST_F(OwnerExitTest, AManagerGetsWhatTheProgramOffersAtItsEnd) {
    database.fill({{"newest"}, {"chosen\r\n文"}});
    launch();
    Manager manager(desktop.display());
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    EXPECT_EQ(Process(CORVATTO_PROGRAM, {"--quit"}, desktop.environment()).exitStatus(), 0);
    QElapsedTimer time;
    time.start();
    EXPECT_TRUE(soon([&] {
        manager.serve();
        return !program->isRunning();
    }));
    EXPECT_LT(time.elapsed(), 1'500);
    EXPECT_EQ(program->exitStatus(), 0);
    EXPECT_EQ(manager.saved, "chosen\r\n文");

    // One that hangs is waited for, but not long, however often the program is told to end.
    launch();
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    time.start();
    EXPECT_TRUE(soon(
        [this] { return !program->isRunning() || kill(static_cast<pid_t>(program->pid()), SIGTERM) != 0; }));
    EXPECT_GE(time.elapsed(), 1'500);
    EXPECT_LE(time.elapsed(), 5'000);
    launch(); // and it starts again
}

TEST_F(OwnerExitTest, AClearedClipboardStaysEmpty) {
    launch();
    copyText("cleared");
    ASSERT_TRUE(soonStored("cleared"));
    x.clearClipboard();
    EXPECT_TRUE(isGone());
    copyText("cleared");
    EXPECT_TRUE(soonStored("cleared", 2));
}

TEST_F(OwnerExitTest, SecretsAreNeitherAskedForNorStoredNorKept) {
    launch();
    copy({{"UTF8_STRING", "hunter2"}, {"text/plain", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}});
    ASSERT_TRUE(soon([this] { return owner->hasPrinted("sent x-kde-passwordManagerHint"); }));
    hidePanel();
    showPanel();
    EXPECT_FALSE(owner->output().contains("request UTF8_STRING"));
    EXPECT_FALSE(owner->output().contains("request text/plain"));
    EXPECT_TRUE(isGone());
    EXPECT_TRUE(rowsAfterNextCopy().isEmpty());
    EXPECT_FALSE(program->output().contains("hunter2"));
    // A mark that cannot be read is one. The mark alone is none, only its value.
    copy({{"UTF8_STRING", "hunter3"}, {"x-kde-passwordManagerHint", "secret"}}, {"--lie=1"});
    ASSERT_TRUE(soon([this] { return owner->hasPrinted("sent x-kde-passwordManagerHint"); }));
    const auto unreadable = std::move(owner);
    EXPECT_EQ(rowsAfterNextCopy().size(), 1); // the good copy of before
    EXPECT_FALSE(unreadable->hasPrinted("request UTF8_STRING"));
    copy({{"UTF8_STRING", "hunted"}, {"x-kde-passwordManagerHint", "public"}});
    EXPECT_TRUE(soonStored("hunted"));
}

} // namespace corvatto::test
