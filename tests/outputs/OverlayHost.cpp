// An overlay server in a process of its own, for whoever looks at it from outside: the browser test
// and the benchmark. It keeps its settings in a folder of its own, prints the port it listens on as
// its first line, and then obeys one JSON object for each line of standard input:
//   {"broadcast": ["original", "translation"]}
//   {"set": {"key": value}}       a string, boolean or number of the store
// Every obeyed line is answered with "ok". The end of the input ends the program.

#include "DefaultsStore.h"
#include "Log.h"
#include "OverlayServer.h"
#include "SerialQueue.h"
#include "StoredValues.h"
#include "TranslationSettings.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <future>
#include <iostream>
#include <string>

using namespace Qt::StringLiterals;

namespace {

void obey(const QJsonObject& command, orv::OverlayServer& server, orv::DefaultsStore& store) {
    if (const QJsonArray texts = command.value("broadcast"_L1).toArray(); !texts.isEmpty()) {
        server.broadcast({texts.at(0).toString(), texts.at(1).toString()});
    }
    if (const QJsonObject values = command.value("set"_L1).toObject(); !values.isEmpty()) {
        orv::test::setInStore(store, values);
        const orv::TranslationSettings settings(store);
        server.setAppearance(orv::OverlayAppearance::fromSettings(settings));
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    orv::SerialQueue disk(u"test.disk"_s);
    orv::DefaultsStore store(disk, folder.filePath(u"defaults.json"_s));

    // The line that tells how the start went is the first one, and it comes from another thread.
    std::promise<QString> started;
    orv::setLogSink([&](const QString& line) { started.set_value(line); });
    orv::OverlayServer server;
    server.start(0);
    const QString line = started.get_future().get();
    orv::setLogSink([](const QString& /*line*/) {}); // Standard output is for the answers.
    if (!server.isRunning()) {
        std::cerr << line.toStdString() << std::endl;
        return 1;
    }
    std::cout << server.activePort() << std::endl;

    for (std::string input; std::getline(std::cin, input);) {
        obey(QJsonDocument::fromJson(QByteArray::fromStdString(input)).object(), server, store);
        std::cout << "ok" << std::endl;
    }
    return 0;
}
