// Materials with their factors and images.
import { byId, counted, element, nameElement, sizeText } from './elements.mjs';
import { viewBytes } from './glb.mjs';

const shownTypes = ['image/png', 'image/jpeg', 'image/webp', 'image/gif', 'image/bmp'];

function toSrgb(linear) {
  const value = linear <= 0.0031308 ? 12.92 * linear : 1.055 * linear ** (1 / 2.4) - 0.055;
  return Math.round(255 * Math.min(1, Math.max(0, value)));
}

// "baseColorTexture" is "base color".
const words = (key) => key.replace(/Texture$/, '').replace(/[A-Z]/g, (letter) => ` ${letter.toLowerCase()}`);

// Every texture that a material names, also in its extensions.
function texturesOf(value, found = []) {
  for (const [key, entry] of Object.entries(value)) {
    if (entry === null || typeof entry !== 'object') continue;
    if (key.endsWith('Texture') && Number.isInteger(entry.index))
      found.push({ slot: words(key), texture: entry.index });
    else if (key !== 'extras') texturesOf(entry, found);
  }
  return found;
}

function factorsOf(material) {
  const { metallicFactor = 1, roughnessFactor = 1 } = material.pbrMetallicRoughness ?? {};
  const rounded = (factor) => Number(Number(factor).toFixed(3));
  const factors = [`metallic ${rounded(metallicFactor)}`, `roughness ${rounded(roughnessFactor)}`];
  const { alphaMode = 'OPAQUE' } = material;
  if (alphaMode !== 'OPAQUE') factors.push(String(alphaMode).toLowerCase());
  if (material.doubleSided) factors.push('double-sided');
  return [...factors, ...Object.keys(material.extensions ?? {})];
}

// Makes material entries; each image gets one address, however many materials show it.
export function materialMaker(model) {
  const { json } = model;
  const addresses = new Map();

  function addressOf(index) {
    if (!addresses.has(index)) {
      const { mimeType, bufferView } = json.images[index];
      const blob = shownTypes.includes(mimeType) && new Blob([viewBytes(model, bufferView)], { type: mimeType });
      addresses.set(index, blob ? URL.createObjectURL(blob) : null);
    }
    return addresses.get(index);
  }
  function enlarge(address, name, note) {
    const dialog = byId('enlarged');
    dialog.querySelector('img').src = address;
    dialog.querySelector('p').replaceChildren(nameElement(name, 'image'), ` ${note}`);
    dialog.showModal();
  }
  function makeTexture({ slot, texture }) {
    const { source, extensions } = json.textures?.[texture] ?? {};
    const index = extensions?.EXT_texture_webp?.source ?? source;
    const image = json.images?.[index];
    const note = element('span', { class: 'note' }, 'no image');
    if (!image) return element('li', {}, element('span', {}, slot), note);
    const size = sizeText(json.bufferViews[image.bufferView].byteLength);
    const address = addressOf(index);
    const caption = element('span', {}, slot, element('br'), nameElement(image.name, `image ${index}`));
    note.textContent = address ? size : `${size}; browsers can't show it`;
    if (!address) return element('li', {}, caption, note);
    const picture = element('img', { src: address, alt: '', loading: 'lazy' });
    picture.addEventListener('load', () => {
      note.textContent = `${picture.naturalWidth} × ${picture.naturalHeight}, ${size}`;
    });
    picture.addEventListener('error', () => { note.textContent = `${size}; broken`; });
    const button = element('button', { type: 'button', 'aria-label': `Enlarge the ${slot} image` }, picture);
    button.addEventListener('click', () => enlarge(address, image.name, note.textContent));
    return element('li', {}, button, caption, note);
  }
  return (material, index) => {
    const factor = material.pbrMetallicRoughness?.baseColorFactor;
    const [red, green, blue] = (Array.isArray(factor) ? factor : [1, 1, 1]).map(toSrgb);
    const swatch = element('span', { class: 'swatch', title: 'base color factor' });
    swatch.style.background = `rgb(${red} ${green} ${blue})`;
    const head = element('div', { class: 'head' }, swatch, nameElement(material.name, `material ${index}`));
    const entry = element('li', {}, head, element('div', { class: 'note' }, factorsOf(material).join(' · ')));
    const textures = texturesOf(material);
    if (textures.length > 0)
      entry.append(element('ul', { class: 'textures', 'aria-label': counted(textures.length, 'texture') },
        ...textures.map(makeTexture)));
    return entry;
  };
}
