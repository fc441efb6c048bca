#pragma once

#include <QString>
#include <QStringList>

/// The servers that come with the program: public networks that a newcomer would look for.
namespace ServerCatalogue {

/// Each server as "host:port", no host twice, in no particular order.
[[nodiscard]] QStringList addresses();

/// The one of `addresses` to propose to somebody who has not connected before.
[[nodiscard]] QString preferredAddress();

} // namespace ServerCatalogue
