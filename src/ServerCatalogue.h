#pragma once

#include <QString>
#include <QStringList>

/// The default servers, which belong to public IRC networks.
namespace ServerCatalogue {

/// Returns the servers as "host:port", in no particular order. No host occurs twice.
[[nodiscard]] QStringList addresses();

/// Returns the preferred default, which is selected while there is no connection history.
[[nodiscard]] QString preferredAddress();

} // namespace ServerCatalogue
