// SPDX-License-Identifier: Apache-2.0
//
// Serves a program that speaks the protocol over pipes as an HTTP endpoint, for test suites that
// know nothing but a URL: node http-bridge.mjs PORT PROGRAM [ARGUMENT …]
//
// A session of the legacy protocol has a process of its own; requests of the modern protocol, which
// has no sessions, share one.
import { spawn } from 'node:child_process';
import { randomUUID } from 'node:crypto';
import { createServer } from 'node:http';
import { createInterface } from 'node:readline';

const [port, program, ...programArguments] = process.argv.slice(2);
const versionKey = 'io.modelcontextprotocol/protocolVersion';

/// One process, and who waits for which of its answers.
class Pipe {
  constructor() {
    this.waiting = new Map();
    this.process = spawn(program, programArguments, { stdio: ['pipe', 'pipe', 'inherit'] });
    createInterface({ input: this.process.stdout }).on('line', (line) => this.receive(line));
  }

  receive(line) {
    const message = JSON.parse(line);
    const isAnswer = 'result' in message || 'error' in message;
    for (const [id, listener] of this.waiting) {
      const ends = isAnswer && JSON.stringify(message.id) === id;
      if (ends || !isAnswer) {
        listener(message, ends);
      }
      if (ends) {
        this.waiting.delete(id);
      }
    }
  }

  send(message, listener) {
    if (listener) {
      this.waiting.set(JSON.stringify(message.id), listener);
    }
    this.process.stdin.write(JSON.stringify(message) + '\n');
  }

  end() {
    this.process.stdin.end();
  }
}

const sessions = new Map();
let modernPipe;

function refuse(response, status, code, text, id = null) {
  response.writeHead(status, { 'content-type': 'application/json' });
  response.end(JSON.stringify({ jsonrpc: '2.0', id, error: { code, message: text } }));
}

// A page of another site could otherwise reach this endpoint through the user's browser.
function isLocal(value) {
  return value === undefined || /^(https?:\/\/)?(localhost|127\.0\.0\.1|\[::1\])(:\d+)?$/.test(value);
}

function statusOf(message) {
  const statuses = { '-32601': 404, '-32602': 400, '-32022': 400, '-32020': 400, '-32021': 400 };
  return (message.error && statuses[message.error.code]) || 200;
}

function pipeFor(message, headers) {
  const meta = message.params && message.params._meta;
  if (meta && versionKey in meta) {
    modernPipe ??= new Pipe();
    return { pipe: modernPipe, modern: true };
  }
  if (message.method === 'initialize') {
    const session = randomUUID();
    const pipe = new Pipe();
    sessions.set(session, pipe);
    return { pipe, session };
  }
  const session = headers['mcp-session-id'];
  return session ? { pipe: sessions.get(session) } : { pipe: (modernPipe ??= new Pipe()), modern: true };
}

function headerProblem(message, headers) {
  const claimed = headers['mcp-protocol-version'];
  const stated = message.params?._meta?.[versionKey];
  if (stated !== undefined && claimed !== stated) {
    return 'the header MCP-Protocol-Version differs from _meta';
  }
  if (headers['mcp-method'] !== undefined && headers['mcp-method'] !== message.method) {
    return 'the header Mcp-Method differs from the message';
  }
  const name = message.params?.name ?? message.params?.uri;
  if (headers['mcp-name'] !== undefined && headers['mcp-name'] !== name) {
    return 'the header Mcp-Name differs from the message';
  }
  return undefined;
}

function answer(response, pipe, message, headers, modern) {
  let streams = false;
  const event = (part) => response.write(`event: message\ndata: ${JSON.stringify(part)}\n\n`);
  pipe.send(message, (part, ends) => {
    if (!streams && ends) {
      response.writeHead(modern ? statusOf(part) : 200, { ...headers, 'content-type': 'application/json' });
      response.end(JSON.stringify(part));
      return;
    }
    if (!streams) {
      response.writeHead(200, { ...headers, 'content-type': 'text/event-stream' });
      streams = true;
    }
    event(part);
    if (ends) {
      response.end();
    }
  });
}

function post(body, request, response) {
  let message;
  try {
    message = JSON.parse(body);
  } catch {
    return refuse(response, 400, -32700, 'not JSON');
  }
  const { pipe, session, modern } = pipeFor(message, request.headers);
  if (!pipe) {
    return refuse(response, 404, -32600, 'no such session', message.id ?? null);
  }
  const problem = modern && headerProblem(message, request.headers);
  if (problem) {
    return refuse(response, 400, -32020, problem, message.id ?? null);
  }
  if (message.id === undefined || message.method === undefined) {
    pipe.send(message);
    response.writeHead(202);
    return response.end();
  }
  return answer(response, pipe, message, session ? { 'mcp-session-id': session } : {}, modern);
}

function endSession(request, response) {
  const session = request.headers['mcp-session-id'];
  sessions.get(session)?.end();
  response.writeHead(sessions.delete(session) ? 200 : 404);
  response.end();
}

const server = createServer((request, response) => {
  if (!isLocal(request.headers.host) || !isLocal(request.headers.origin)) {
    return refuse(response, 403, -32600, 'only for pages of this machine');
  }
  if (request.method === 'DELETE') {
    return endSession(request, response);
  }
  if (request.method !== 'POST') {
    response.writeHead(405, { allow: 'POST, DELETE' });
    return response.end();
  }
  let body = '';
  request.on('data', (piece) => (body += piece));
  return request.on('end', () => post(body, request, response));
});
server.listen(Number(port), "127.0.0.1", () =>
  console.log(`http://127.0.0.1:${server.address().port}/mcp`));
