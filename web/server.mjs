// A static server for the built page, on the loopback address only. The
// page needs no server of its own; this one is for `scripts/web`, the tests
// and the bench. Run as a program it serves a folder and prints the address.
import { createServer } from 'node:http';
import { readFile } from 'node:fs/promises';
import { extname, join, normalize, sep } from 'node:path';
import { pathToFileURL } from 'node:url';

const types = {
  '.html': 'text/html; charset=utf-8',
  '.css': 'text/css; charset=utf-8',
  '.js': 'text/javascript; charset=utf-8',
  '.wasm': 'application/wasm',
};

// Resolves with the server once it listens; port 0 takes any free port.
export function serve(folder, port = 0, host = '127.0.0.1') {
  const root = normalize(folder) + sep;
  const server = createServer(async (request, response) => {
    const path = decodeURIComponent(new URL(request.url, 'http://host').pathname);
    const file = normalize(join(root, path.endsWith('/') ? path + 'index.html' : path));
    try {
      if (!file.startsWith(root)) throw new Error('outside the site');
      const body = await readFile(file);
      response.writeHead(200, { 'Content-Type': types[extname(file)] || 'application/octet-stream' });
      response.end(body);
    } catch {
      response.writeHead(404, { 'Content-Type': 'text/plain' });
      response.end('not found\n');
    }
  });
  return new Promise((resolve, reject) => {
    server.once('error', reject);
    server.listen(port, host, () => resolve(server));
  });
}

export function addressOf(server) {
  const { address, port } = server.address();
  return `http://${address}:${port}`;
}

if (import.meta.url === pathToFileURL(process.argv[1]).href) {
  const [folder, port = '8000'] = process.argv.slice(2);
  const server = await serve(folder, Number(port));
  console.log(addressOf(server));
}
