// The program's trace and profile channels.
#ifndef PUBLISH_CHANNELS_H
#define PUBLISH_CHANNELS_H

namespace publish {

extern int debugChannel;   // "publish"
extern int profileChannel; // "publish"

/// Registers both.
void registerChannels();

} // namespace publish

#endif
