// Plays the services of an identification for a person at the program: prints the variables that point there,
// then takes the services' manners from its input, a word a line: proper, silent, failing. Ends with its
// input.
#include "identifyserver.h"

#include <QCoreApplication>

#include <iostream>
#include <string>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    IdentifyServer server;
    server.putIntoEnvironment();
    for (const char* name : {"MELODRIFT_ACOUSTID_URL", "MELODRIFT_MUSICBRAINZ_URL", "MELODRIFT_COVERART_URL",
                             "MELODRIFT_ACOUSTID_KEY"})
        std::cout << name << '=' << qgetenv(name).constData() << '\n' << std::flush;
    for (std::string word; std::getline(std::cin, word);)
        server.setManner(IdentifyServer::AcoustId, word == "silent"    ? IdentifyServer::Manner::Silent
                                                   : word == "failing" ? IdentifyServer::Manner::ServerError
                                                                       : IdentifyServer::Manner::Proper);
    return 0;
}
