// The bar below the model: clips to choose and play, the turning of the camera.
import { byId, element } from './elements.mjs';
import { clipKey } from './glb.mjs';

function startClock(viewer) {
  const seconds = (value) => value.toFixed(2);
  const time = byId('time');
  function show() {
    const duration = viewer.duration || 0;
    const now = duration > 0 ? viewer.currentTime % duration : 0;
    time.max = duration || 1;
    time.value = now;
    byId('clock').textContent = `${seconds(now)} / ${seconds(duration)} s`;
    byId('play').textContent = viewer.paused ? '▶' : '❚❚';
    byId('play').setAttribute('aria-label', viewer.paused ? 'Play' : 'Pause');
    requestAnimationFrame(show);
  }
  time.addEventListener('input', () => {
    viewer.pause();
    // The very end would be the start again.
    viewer.currentTime = Math.min(Number(time.value), viewer.duration * 0.9999);
  });
  show();
}

export function setUpClips(viewer, animations) {
  const select = byId('clip');
  animations.forEach((animation, index) => {
    const name = animation.name?.trim() || clipKey(index);
    select.append(element('option', { value: clipKey(index) }, name));
  });
  select.addEventListener('change', async () => {
    viewer.animationName = select.value;
    await viewer.updateComplete;
    viewer.currentTime = 0;
  });
  byId('play').addEventListener('click', () => (viewer.paused ? viewer.play() : viewer.pause()));
  viewer.animationName = clipKey(0);
  viewer.autoplay = !matchMedia('(prefers-reduced-motion: reduce)').matches;
  byId('clips').hidden = false;
  startClock(viewer);
}

export function setUpCamera(viewer) {
  const turn = byId('turn');
  function setTurning(turning) {
    viewer.autoRotate = turning;
    turn.setAttribute('aria-pressed', turning);
  }
  turn.addEventListener('click', () => setTurning(!viewer.autoRotate));
  const orbit = viewer.getAttribute('camera-orbit');
  byId('reset').addEventListener('click', () => {
    viewer.resetTurntableRotation(0);
    viewer.cameraOrbit = orbit;
    viewer.fieldOfView = 'auto';
    viewer.cameraTarget = 'auto auto auto';
    viewer.jumpCameraToGoal();
  });
  setTurning(!matchMedia('(prefers-reduced-motion: reduce)').matches);
}
