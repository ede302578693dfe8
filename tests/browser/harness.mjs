// What every browser test needs: a temporary machine (its own HOME, XDG folders and Mono registry),
// the real `marrowby edit` on it, and a fresh headless Chromium. Missing tools fail loudly.
import { spawn, spawnSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import readline from 'node:readline';
import { fileURLToPath } from 'node:url';

export const testsDir = path.dirname(fileURLToPath(import.meta.url));
export const sourceDir = path.resolve(testsDir, '../..');
const chromiumPath = process.env.CHROMIUM || '/usr/bin/chromium';

const chromiumArgs = [
  '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync',
];

/// The tools the tests drive; throws with the way to install what is missing.
export async function requireTools() {
  const problems = [];
  const exe = process.env.MARROWBY_EXE;
  if (!exe) problems.push('MARROWBY_EXE is not set: run the tests through ctest (test browser_editor), or set it to the built marrowby.');
  else if (!fs.existsSync(exe)) problems.push(`MARROWBY_EXE names ${exe}, which does not exist: build marrowby first.`);
  if (!fs.existsSync(chromiumPath)) problems.push(`Chromium is missing at ${chromiumPath}: apt-get install chromium (or bash scripts/setup.sh).`);
  let chromium = null;
  try {
    ({ chromium } = await import('playwright-core'));
  } catch {
    problems.push(`playwright-core is not installed: cd ${testsDir} && npm ci`);
  }
  if (problems.length) throw new Error(`The browser tests cannot run:\n  ${problems.join('\n  ')}`);
  return chromium;
}

/// A temporary machine: HOME, XDG folders and Mono's registry inside one folder that close() removes.
export class Machine {
  constructor() {
    this.root = fs.mkdtempSync(path.join(os.tmpdir(), 'marrowby-browser-'));
    this.env = { ...process.env };
    for (const name of ['MARROWBY_REGISTRY', 'MARROWBY_OPTIONS', 'MARROWBY_PACKAGE']) delete this.env[name];
    const dirs = {
      HOME: 'home',
      XDG_CONFIG_HOME: 'home/.config',
      XDG_DATA_HOME: 'home/.local/share',
      XDG_CACHE_HOME: 'home/.cache',
      XDG_STATE_HOME: 'home/.local/state',
      XDG_RUNTIME_DIR: 'runtime',
      MONO_REGISTRY_PATH: 'mono-registry',
    };
    for (const [name, sub] of Object.entries(dirs)) {
      const dir = path.join(this.root, sub);
      fs.mkdirSync(dir, { recursive: true, mode: 0o700 });
      this.env[name] = dir;
    }
    this.work = path.join(this.root, 'work');
    fs.mkdirSync(this.work);
    this.globalArgs = [];
    this.editors = [];
    this.browsers = [];
  }

  path(...parts) {
    return path.join(this.work, ...parts);
  }

  /// Gives the machine a registry hive and options file made from the local Mono install.
  setupMono() {
    const registry = this.path('mono');
    const options = this.path('options.xml');
    const result = spawnSync(process.env.MARROWBY_EXE, ['setup-mono', '--dir', registry, '--options', options],
      { env: this.env, encoding: 'utf8' });
    if (result.status !== 0) throw new Error(`marrowby setup-mono failed (${result.status}): ${result.stderr}${result.stdout}`);
    this.globalArgs = ['--registry', path.join(registry, 'registry.reg'), '--options', options];
    this.optionsFile = options;
  }

  /// Starts `marrowby edit FILE --no-browser --port 0`; resolves with its URL and token.
  async startEditor(file) {
    const args = [...this.globalArgs, 'edit', file, '--no-browser', '--port', '0'];
    const child = spawn(process.env.MARROWBY_EXE, args, { env: this.env, stdio: ['ignore', 'pipe', 'pipe'] });
    let stderr = '';
    child.stderr.on('data', (chunk) => { stderr += chunk; });
    const editor = { child, stderr: () => stderr };
    this.editors.push(editor);
    const lines = readline.createInterface({ input: child.stdout });
    const first = await new Promise((resolve, reject) => {
      lines.once('line', resolve);
      child.once('exit', (code, signal) => reject(new Error(`marrowby edit ended (${code ?? signal}) before printing its address: ${stderr}`)));
      child.once('error', reject);
    });
    editor.started = true;
    const url = new URL(first.trim());
    editor.url = url.href;
    editor.origin = url.origin;
    editor.port = url.port;
    editor.token = url.searchParams.get('token');
    return editor;
  }

  /// A fresh headless Chromium with a profile of its own; resolves with {context, page}.
  async browser(chromium) {
    const profile = path.join(this.root, `chromium-${this.browsers.length}`);
    const context = await chromium.launchPersistentContext(profile, {
      executablePath: chromiumPath,
      headless: true,
      args: chromiumArgs,
      env: this.env,
      viewport: { width: 1280, height: 860 },
    });
    this.browsers.push(context);
    const page = context.pages()[0] || (await context.newPage());
    // A script error of the page shows in the test's output next to the failure it causes.
    page.on('pageerror', (e) => console.error(`page error: ${e.message}`));
    return { context, page };
  }

  /// Ends the browsers and editors and removes the machine; throws when an editor did not exit 0
  /// on SIGTERM (a crash or a sanitizer's report).
  async close() {
    for (const context of this.browsers) await context.close().catch(() => {});
    const problems = [];
    for (const { child, stderr, started } of this.editors) {
      if (child.exitCode === null && child.signalCode === null) {
        const ended = new Promise((resolve) => child.once('exit', resolve));
        child.kill('SIGTERM');
        await ended;
      }
      // One that never started has had its failure reported already.
      if (started && child.exitCode !== 0) problems.push(`marrowby edit exited ${child.exitCode ?? child.signalCode}: ${stderr()}`);
    }
    fs.rmSync(this.root, { recursive: true, force: true });
    if (problems.length) throw new Error(problems.join('\n'));
  }
}

/// Opens the editor's page and waits until it has drawn the project.
export async function openEditor(page, editor) {
  await page.goto(editor.url);
  await page.locator('body[data-ready="true"]').waitFor();
}

/// Runs action, then waits until the page has sent every event it caused and drawn the answers.
export async function settled(page, action = async () => {}) {
  await action();
  await page.locator('body:not([data-busy])').waitFor({ state: 'attached' });
}

/// The project file as a list of actions, each {className, enabled, description, properties}.
export async function readProject(page, file) {
  const xml = fs.readFileSync(file, 'utf8');
  return page.evaluate((text) => {
    const doc = new DOMParser().parseFromString(text, 'application/xml');
    if (doc.querySelector('parsererror')) throw new Error('The saved project is not well-formed XML');
    return [...doc.querySelectorAll('MarrowbyProject > Actions > Action')].map((action) => {
      const properties = {};
      for (const p of action.querySelectorAll(':scope > Property')) {
        const items = p.querySelectorAll(':scope > Item');
        properties[p.getAttribute('name')] = items.length ? [...items].map((i) => i.textContent) : p.textContent;
      }
      return {
        className: action.getAttribute('class'),
        enabled: action.getAttribute('enabled'),
        description: action.getAttribute('description'),
        properties,
      };
    });
  }, xml);
}

/// Writes a screenshot for the README when UPDATE_SCREENSHOTS=1.
export async function screenshot(page, name) {
  if (process.env.UPDATE_SCREENSHOTS !== '1') return;
  const dir = path.join(sourceDir, 'docs', 'screenshots');
  fs.mkdirSync(dir, { recursive: true });
  await page.screenshot({ path: path.join(dir, `${name}.png`) });
}
