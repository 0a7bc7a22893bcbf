// SPDX-License-Identifier: Apache-2.0
//
// Drives the bridge with both official client libraries: node clients.mjs PROGRAM [ARGUMENT …]
// The program offers examples/light, which it starts when it is needed.
import assert from 'node:assert/strict';
import { Client as LegacyClient } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport as LegacyTransport } from '@modelcontextprotocol/sdk/client/stdio.js';
import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';

const [command, ...args] = process.argv.slice(2);
const server = { command, args, stderr: 'ignore' };
const name = { name: 'norix-test', version: '1' };
const uri = 'norix://org.example.light/state';

async function callsTools(client) {
  const { tools } = await client.listTools();
  assert.deepEqual(tools.map((tool) => tool.name).sort(), ['light_lightOff', 'light_lightOn', 'light_state']);

  const done = await client.callTool({ name: 'light_lightOn', arguments: {} });
  assert.ok(!done.isError, JSON.stringify(done));
  const state = await client.callTool({ name: 'light_state', arguments: {} });
  assert.deepEqual(state.structuredContent, { light: 'on' });
}

async function readsResources(client) {
  const { resources } = await client.listResources();
  assert.deepEqual(resources.map((resource) => resource.uri), [uri]);
  const read = await client.readResource({ uri });
  assert.deepEqual(JSON.parse(read.contents[0].text), { light: 'on' });
}

async function refusesWhatIsWrong(client) {
  await assert.rejects(client.callTool({ name: 'light_fly', arguments: {} }));
  const wrong = await client.callTool({ name: 'light_lightOn', arguments: { colour: 'red' } });
  assert.ok(wrong.isError, JSON.stringify(wrong));
}

async function answersBursts(client) {
  for (let burst = 0; burst < 20; ++burst) {
    const calls = Array.from({ length: 9 }, (_, index) =>
      client.callTool({ name: index % 2 ? 'light_lightOn' : 'light_lightOff', arguments: {} }));
    for (const result of await Promise.all(calls)) {
      assert.ok(!result.isError, JSON.stringify(result));
    }
  }
}

async function cancels(client) {
  const controller = new AbortController();
  const options = { signal: controller.signal };
  const call = { name: 'light_lightOff', arguments: {} };
  const aborted = client instanceof Client ? client.callTool(call, options) : client.callTool(call, undefined, options);
  controller.abort();
  await assert.rejects(aborted);
  const state = await client.callTool({ name: 'light_state', arguments: {} });
  assert.ok(!state.isError, JSON.stringify(state));
}

async function drive(title, client, transport) {
  await client.connect(transport);
  for (const step of [callsTools, readsResources, refusesWhatIsWrong, answersBursts, cancels]) {
    await step(client);
    console.log(`  ${title}: ${step.name}`);
  }
  await client.close();
}

await drive('sdk, legacy', new LegacyClient(name), new LegacyTransport(server));
for (const [title, mode] of [['client, auto', 'auto'], ['client, modern', { pin: '2026-07-28' }]]) {
  const client = new Client(name, { versionNegotiation: { mode } });
  await drive(title, client, new StdioClientTransport(server));
}
