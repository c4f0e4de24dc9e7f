#include "VRChatOutput.h"

#include "LogCapture.h"
#include "NameServer.h"
#include "Ports.h"
#include "PrivatePulse.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"
#include "VRChatMessage.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <gtest/gtest.h>

#include <thread>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// What `chatboxPacket` puts before the text.
constexpr qsizetype textStart = 24;

class VRChatOutputTest : public ::testing::Test {
  protected:
    VRChatOutputTest() {
        EXPECT_TRUE(chatbox.bind(QHostAddress(QHostAddress::LocalHost), 0));
        settings.vrchatEnabled.set(true);
        settings.vrchatPort.set(chatbox.localPort());
    }

    /// The datagrams that have come so far.
    const QByteArrayList& packets() {
        while (chatbox.hasPendingDatagrams()) {
            QByteArray bytes(static_cast<qsizetype>(chatbox.pendingDatagramSize()), '\0');
            const qint64 size = chatbox.readDatagram(bytes.data(), bytes.size(), nullptr, &sender);
            received.append(bytes.first(size));
            senders.append(sender);
        }
        return received;
    }

    bool waitForPackets(qsizetype count) {
        return waitUntil([this, count] { return packets().size() >= count; });
    }

    static QString textIn(const QByteArray& packet) {
        return QString::fromUtf8(packet.sliced(textStart).constData());
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    QUdpSocket chatbox;
    quint16 sender = 0;
    QByteArrayList received;
    QList<quint16> senders;
    NameServer names;
};

TEST_F(VRChatOutputTest, aResultIsOneDatagram) {
    VRChatOutput output(settings);
    output.sendToVRChat({u"Guten Morgen"_s, u"Good morning"_s});
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(received, QByteArrayList{chatboxPacket(u"Guten Morgen\nGood morning"_s, false)});
}

TEST_F(VRChatOutputTest, theSettingsDecideTextAndSound) {
    settings.vrchatSendMode.set(1);
    settings.vrchatPlaySound.set(true);
    VRChatOutput output(settings);
    output.sendToVRChat({u"Guten Morgen"_s, u"Good morning"_s});
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(received, QByteArrayList{chatboxPacket(u"Good morning"_s, true)});
}

TEST_F(VRChatOutputTest, eachMessageHasASocketOfItsOwn) {
    VRChatOutput output(settings);
    for (int i = 0; i < 20; ++i) {
        output.sendToVRChat({QString::number(i), {}});
    }
    ASSERT_TRUE(waitForPackets(20));
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(textIn(received[i]), QString::number(i));
    }
    EXPECT_GT(QSet<quint16>(senders.begin(), senders.end()).size(), 1);
}

TEST_F(VRChatOutputTest, sendsNothingWhileItIsOff) {
    settings.vrchatEnabled.set(false);
    VRChatOutput output(settings);
    output.sendToVRChat({u"Hallo"_s, u"Hello"_s});
    output.sendVRChatTest(); // Comes after, so that nothing else can still be on its way.
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(received, QByteArrayList{chatboxPacket(u"ORV — VRChat OSC ✓"_s, false)});
}

TEST_F(VRChatOutputTest, sendsNoEmptyText) {
    VRChatOutput output(settings);
    output.sendToVRChat({{}, {}});
    settings.vrchatSendMode.set(0);
    output.sendToVRChat({{}, u"Hello"_s});
    output.sendVRChatTest();
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(textIn(received[0]), u"ORV — VRChat OSC ✓"_s);
}

TEST_F(VRChatOutputTest, theTestAsksForTheSoundWhenItIsOn) {
    settings.vrchatPlaySound.set(true);
    VRChatOutput output(settings);
    output.sendVRChatTest();
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(received[0].sliced(16, 4), ",sTT");
}

TEST_F(VRChatOutputTest, aPortOf70000Is65535) {
    QUdpSocket last;
    ASSERT_TRUE(last.bind(QHostAddress(QHostAddress::LocalHost), 65535));
    settings.vrchatPort.set(70000);
    VRChatOutput output(settings);
    output.sendToVRChat({u"Hallo"_s, {}});
    EXPECT_TRUE(waitUntil([&] { return last.hasPendingDatagrams(); }));
}

TEST_F(VRChatOutputTest, mayBeCalledFromAnyThread) {
    VRChatOutput output(settings);
    std::thread one(
        [&] { output.sendOSCChatbox(u"one"_s, false, u"127.0.0.1"_s, chatbox.localPort()); });
    std::thread two(
        [&] { output.sendOSCChatbox(u"two"_s, false, u"127.0.0.1"_s, chatbox.localPort()); });
    one.join();
    two.join();
    EXPECT_TRUE(waitForPackets(2));
}

TEST_F(VRChatOutputTest, aClosedPortGoesUnnoticed) {
    const quint16 port = freePort();
    settings.vrchatPort.set(port);
    chatbox.close();
    VRChatOutput output(settings);
    for (int i = 0; i < 3; ++i) {
        output.sendToVRChat({u"Hallo"_s, {}});
    }
    ASSERT_TRUE(chatbox.bind(QHostAddress(QHostAddress::LocalHost), port));
    output.sendVRChatTest();
    EXPECT_TRUE(waitForPackets(1));
    EXPECT_FALSE(log.containsStart(u"❌"_s));
}

TEST_F(VRChatOutputTest, aNameIsLookedUp) {
    settings.vrchatHost.set(u"localhost"_s);
    VRChatOutput output(settings);
    output.sendToVRChat({u"Hallo"_s, {}});
    EXPECT_TRUE(waitForPackets(1));
}

TEST_F(VRChatOutputTest, ofSeveralAddressesTheIpv4OneIsTaken) {
    settings.vrchatHost.set(u"game"_s);
    names.answer({{QHostAddress(u"::1"_s), QHostAddress(u"127.0.0.1"_s)}, {}});
    VRChatOutput output(settings, names.lookUp());
    output.sendToVRChat({u"Hallo"_s, {}});
    EXPECT_TRUE(waitForPackets(1));
}

TEST_F(VRChatOutputTest, aNameThatIsNotFoundMakesALine) {
    settings.vrchatHost.set(u"game"_s);
    names.answer({{}, u"Name or service not known"_s});
    VRChatOutput output(settings, names.lookUp());
    output.sendToVRChat({u"Hallo"_s, {}});
    EXPECT_TRUE(
        waitUntil([this] { return log.contains(u"❌ VRChat OSC: Name or service not known"_s); }));
}

TEST_F(VRChatOutputTest, whatCannotBeSentMakesALine) {
    settings.vrchatPort.set(0);
    VRChatOutput output(settings);
    output.sendToVRChat({u"Hallo"_s, {}});
    EXPECT_TRUE(waitUntil([this] { return log.containsStart(u"❌ VRChat OSC: "_s); }));
}

TEST_F(VRChatOutputTest, aTextTooBigForADatagramMakesALineAndTheNextLeaves) {
    VRChatOutput output(settings);
    output.sendToVRChat({u"z"_s + QString(70000, QChar(0x0301)), {}});
    output.sendToVRChat({u"Hallo"_s, {}});
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(textIn(received[0]), u"Hallo"_s);
    EXPECT_TRUE(log.containsStart(u"❌ VRChat OSC: "_s));
}

TEST_F(VRChatOutputTest, aNameThatIsNeverFoundHoldsUpNobody) {
    VRChatOutput output(settings, names.lookUp());
    settings.vrchatHost.set(u"game"_s);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 10000; ++i) {
        output.sendToVRChat({QString::number(i), {}});
    }
    const qint64 sending = clock.elapsed();
    RecordProperty("ten_thousand_results_ms", static_cast<int>(sending));
    settings.vrchatHost.set(u"127.0.0.1"_s);
    output.sendToVRChat({u"Hallo"_s, {}});
    ASSERT_TRUE(waitForPackets(1));
    EXPECT_EQ(textIn(received[0]), u"Hallo"_s);
    EXPECT_LE(names.asked().size(), 1);
}

TEST_F(VRChatOutputTest, ofTooManyMessagesTheOldestAreDropped) {
    VRChatOutput output(settings, names.lookUp());
    settings.vrchatHost.set(u"game"_s);
    for (int i = 0; i < 10000; ++i) {
        output.sendToVRChat({QString::number(i), {}});
    }
    ASSERT_TRUE(waitUntil([this] { return names.asked().size() == 1; }));
    names.answer({{QHostAddress(QHostAddress::LocalHost)}, {}});
    ASSERT_TRUE(
        waitUntil([this] { return !packets().isEmpty() && textIn(packets().last()) == u"9999"; }));
    EXPECT_LE(packets().size(), qsizetype(HostLookups::maximumWaiting));
}

TEST_F(VRChatOutputTest, goesWithoutWaitingForAName) {
    settings.vrchatHost.set(u"game"_s);
    {
        VRChatOutput output(settings, names.lookUp());
        output.sendToVRChat({u"Hallo"_s, {}});
        ASSERT_TRUE(waitUntil([this] { return names.asked().size() == 1; }));
    }
    SUCCEED() << "it has gone while the name server is still silent";
}

TEST_F(VRChatOutputTest, whatWasHandedOverLeavesBeforeItGoes) {
    {
        VRChatOutput output(settings);
        output.sendToVRChat({u"Hallo"_s, {}});
    }
    EXPECT_TRUE(waitForPackets(1));
}

/// A program of others that prints the OSC messages it receives.
class OscDump {
  public:
    OscDump() {
        program_ = std::make_unique<Program>(
            u"oscdump"_s, QStringList{u"-L"_s, QString::number(port_)},
            QProcessEnvironment::systemEnvironment(), folder_.filePath(u"output"_s));
        EXPECT_TRUE(waitUntil([this] { return isListening(); }));
    }

    quint16 port() const { return port_; }

    /// Its output without the time before each message.
    QString output() const {
        QFile file(folder_.filePath(u"output"_s));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll())
            .remove(QRegularExpression(u"^[0-9a-f]{8}\\.[0-9a-f]{8} "_s,
                                       QRegularExpression::MultilineOption));
    }

  private:
    bool isListening() const {
        const QByteArray wanted =
            ':' + QByteArray::number(port_, 16).toUpper().rightJustified(4, '0') + ' ';
        for (const QString& name : {u"/proc/net/udp"_s, u"/proc/net/udp6"_s}) {
            QFile file(name);
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(wanted)) {
                return true;
            }
        }
        return false;
    }

    QTemporaryDir folder_;
    const quint16 port_ = freePort();
    std::unique_ptr<Program> program_;
};

TEST_F(VRChatOutputTest, aForeignProgramReadsTheMessages) {
    const OscDump peer;
    settings.vrchatPort.set(peer.port());
    VRChatOutput output(settings);
    output.sendToVRChat({u"Über Größe"_s, u"About size 👨‍👩‍👧🇩🇪"_s});
    settings.vrchatPlaySound.set(true);
    output.sendToVRChat({u"日本語"_s, {}});
    output.sendVRChatTest();
    const QString expected =
        u"/chatbox/input sTF \"Über Größe\nAbout size 👨‍👩‍👧🇩🇪\" #T #F\n"
        "/chatbox/input sTT \"日本語\" #T #T\n"
        "/chatbox/input sTT \"ORV — VRChat OSC ✓\" #T #T\n"_s;
    waitUntil([&] { return peer.output().size() >= expected.size(); });
    EXPECT_EQ(peer.output(), expected);
}

} // namespace

} // namespace orv::test
