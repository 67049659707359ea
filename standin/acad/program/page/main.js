// One page, two sources of frames.

const shown = isLive ? playLive(embedded.live) : playRecorded(embedded);
