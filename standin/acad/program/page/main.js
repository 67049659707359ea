// One page, two sources of frames.

const shown = isLive ? playLive(embedded.live) : playRecorded(embedded);
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => { paint = colours(); shown.recolour(); });
