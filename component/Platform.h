#pragma once

namespace palvex::component {

/// Installs this platform's services in the engine: numeric texts by the user's regional settings,
/// messages in a message box. To be called before the first object is made.
void installPlatform();

}  // namespace palvex::component
