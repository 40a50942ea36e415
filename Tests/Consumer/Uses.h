#ifndef CONSUMER_USES_H
#define CONSUMER_USES_H

#include <string>

/// One use of each family of the foundation. They leave their findings with Require(); files go to the directory.
void UseTexts();
void UseWaits();
void UsePool();
void UseIniFile(std::string const & directory);
void UseLanguageFile(std::string const & directory);
void UseTrace(std::string const & directory);
void UseXml(std::string const & directory);
void UseErrorRecord();
/// A server and a client that talk over TCP on this host.
void UseStreamProtocol();

#endif
