// The .glb in the page: its JSON, its binary chunk, and what can be counted from them.

const headerSize = 12;
const chunkHeaderSize = 8;

// Decodes the pieces of base64 that the page holds, and frees them.
export function takeModelBytes(pieces, size) {
  const bytes = new Uint8Array(size);
  let filled = 0;
  for (const piece of pieces) {
    const text = atob(piece.textContent);
    for (let i = 0; i < text.length; ++i) bytes[filled++] = text.charCodeAt(i);
    piece.remove();
  }
  return bytes;
}

export function parseGlb(bytes) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  const jsonStart = headerSize + chunkHeaderSize;
  const jsonEnd = jsonStart + view.getUint32(headerSize, true);
  const json = JSON.parse(new TextDecoder().decode(bytes.subarray(jsonStart, jsonEnd)));
  return { json, jsonSize: jsonEnd - jsonStart, binaryChunk: bytes.subarray(jsonEnd) };
}

export const clipKey = (index) => `clip ${index}`;

// The viewer finds clips by name, and names may be missing or come twice.
export function withNumberedClips({ json, binaryChunk }) {
  const animations = json.animations?.map((animation, index) => ({ ...animation, name: clipKey(index) }));
  const text = new TextEncoder().encode(JSON.stringify({ ...json, animations }));
  const padded = Math.ceil(text.length / 4) * 4;
  const head = new Uint8Array(headerSize + chunkHeaderSize + padded).fill(0x20);
  const view = new DataView(head.buffer);
  const words = [0x46546c67, 2, head.length + binaryChunk.length, padded, 0x4e4f534a];
  words.forEach((word, index) => view.setUint32(4 * index, word, true));
  head.set(text, headerSize + chunkHeaderSize);
  return new Blob([head, binaryChunk], { type: 'model/gltf-binary' });
}

export function viewBytes({ json, binaryChunk }, index) {
  const { byteOffset = 0, byteLength } = json.bufferViews[index];
  return binaryChunk.subarray(chunkHeaderSize + byteOffset, chunkHeaderSize + byteOffset + byteLength);
}

export function trianglesOf(json, mesh) {
  let triangles = 0;
  for (const { mode = 4, indices, attributes } of mesh.primitives ?? []) {
    const corners = json.accessors?.[indices ?? attributes?.POSITION]?.count ?? 0;
    if (mode === 4) triangles += Math.floor(corners / 3);
    if (mode === 5 || mode === 6) triangles += Math.max(0, corners - 2);
  }
  return triangles;
}

// Bytes by what they are for. A view that several things use counts for the first of them.
export function bytesByUse({ json, jsonSize }) {
  const sizes = { geometry: 0, animation: 0, images: 0, other: 0, 'names and structure': jsonSize };
  const use = new Array(json.bufferViews?.length ?? 0).fill('other');
  const mark = (view, name) => { if (use[view] === 'other') use[view] = name; };
  const markAccessor = (index, name) => mark(json.accessors?.[index]?.bufferView, name);
  for (const image of json.images ?? []) mark(image.bufferView, 'images');
  for (const { samplers = [] } of json.animations ?? [])
    for (const { input, output } of samplers)
      for (const accessor of [input, output]) markAccessor(accessor, 'animation');
  for (const { primitives = [] } of json.meshes ?? [])
    for (const { indices, attributes = {}, targets = [] } of primitives)
      for (const accessor of [indices, ...[attributes, ...targets].flatMap(Object.values)])
        markAccessor(accessor, 'geometry');
  for (const skin of json.skins ?? []) markAccessor(skin.inverseBindMatrices, 'geometry');
  use.forEach((name, index) => { sizes[name] += json.bufferViews[index].byteLength; });
  return sizes;
}
