// One page, two sources of frames.

// Without WebGL, for instance.
window.addEventListener('error', e => { byId('subtitle').textContent = 'The page has failed: ' + e.message; }, {once: true});

const shown = isLive ? playLive(embedded.live) : playRecorded(embedded);
