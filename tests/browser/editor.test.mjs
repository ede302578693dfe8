// The property editor in a real browser against the real `marrowby edit`: building a project from
// the page, the property pages' reactions, running a build from the page, and the server's refusal of
// requests that do not come from its own page.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import http from 'node:http';
import path from 'node:path';
import { before, test } from 'node:test';

import { Machine, openEditor, readProject, requireTools, screenshot, sourceDir, settled } from './harness.mjs';

let chromium;
before(async () => {
  chromium = await requireTools();
});

/// A machine, an editor on file and a browser showing it; closed when the test ends.
async function session(t, file, { mono = false } = {}) {
  const machine = new Machine();
  t.after(() => machine.close());
  if (mono) machine.setupMono();
  const project = typeof file === 'function' ? file(machine) : machine.path(file);
  const editor = await machine.startEditor(project);
  const { page } = await machine.browser(chromium);
  await openEditor(page, editor);
  return { machine, editor, page, project };
}

async function addStep(page, category, displayName) {
  await page.getByRole('button', { name: 'Add...' }).click();
  const dialog = page.getByRole('dialog', { name: 'Add step' });
  await dialog.getByRole('region', { name: category }).getByRole('button', { name: displayName, exact: true }).click();
  await page.getByRole('heading', { name: new RegExp(`\\d+\\. ${displayName.replace(/[[\]]/g, '\\$&')}$`) }).waitFor();
}

async function save(page) {
  await page.getByRole('button', { name: 'Save', exact: true }).click();
  await page.getByRole('status').filter({ hasText: /^Saved / }).waitFor();
}

test('a GAC install step with a reference count is saved with exactly the properties set on its page', async (t) => {
  const { page, project, machine } = await session(t, (m) => {
    fs.mkdirSync(m.path('bin'));
    fs.writeFileSync(m.path('bin', 'Core.dll'), 'MZ');
    fs.writeFileSync(m.path('bin', 'readme.txt'), '');
    return m.path('new.mbproj');
  });
  assert.equal(fs.existsSync(project), false);
  assert.equal(await page.locator('#file-name').textContent(), 'new.mbproj');

  await addStep(page, '.Net Tools', 'GAC Install [GACUTIL]');
  assert.equal(await page.getByRole('tab', { selected: true }).textContent(), 'GAC Install');
  const fields = ['Scheme :', 'ID :', 'Description :'].map((label) => page.getByLabel(label, { exact: true }));
  for (const field of fields) assert.equal(await field.isDisabled(), true);

  const box = page.getByLabel('Add reference count');
  await settled(page, () => box.click());
  assert.equal(await box.isChecked(), true);
  for (const field of fields) assert.equal(await field.isEnabled(), true);

  // Applying with an empty reference shows the page's own check.
  await page.getByRole('button', { name: 'Apply' }).click();
  await page.getByRole('dialog').getByText('Assembly Path is required.').waitFor();
  await page.getByRole('dialog').getByRole('button', { name: 'OK' }).click();

  // The browse button opens the page's file dialog in the project's folder, with the page's filter.
  const pathField = page.locator('[data-control="edAssemblyPath"]');
  const browse = page.getByRole('button', { name: /^Browse: Assembly Path/ });
  const chooser = page.getByRole('dialog', { name: 'Select File' });
  const entries = chooser.getByRole('listbox', { name: 'Folder contents' }).getByRole('option');
  const listed = () => entries.allTextContents();
  await browse.click();
  await chooser.waitFor();
  assert.deepEqual(await chooser.getByLabel('Files of type').locator('option').allTextContents(),
    ['Assemblies (*.dll, *.exe)', 'All Files (*.*)']);
  await entries.filter({ hasText: 'bin/' }).dblclick();
  await entries.filter({ hasText: 'Core.dll' }).waitFor();
  assert.equal(await chooser.getByLabel('Folder', { exact: true }).inputValue(), machine.path('bin'));
  assert.deepEqual(await listed(), ['Core.dll']);
  await chooser.getByLabel('Files of type').selectOption({ label: 'All Files (*.*)' });
  assert.deepEqual(await listed(), ['Core.dll', 'readme.txt']);
  await entries.filter({ hasText: 'Core.dll' }).click();
  await settled(page, () => chooser.getByRole('button', { name: 'OK' }).click());
  assert.equal(await pathField.inputValue(), machine.path('bin', 'Core.dll'));
  // Cancel leaves the field as it was.
  await browse.click();
  await settled(page, () => chooser.getByRole('button', { name: 'Cancel' }).click());
  assert.equal(await pathField.inputValue(), machine.path('bin', 'Core.dll'));

  await pathField.fill('%ProjectDir%/bin/Core.dll');
  await fields[0].fill('UNINSTALL_KEY');
  await fields[1].fill('Core');
  await fields[2].fill('Installed by "the build"');
  await settled(page, () => fields[2].press('Tab'));
  assert.deepEqual(await Promise.all(fields.map((f) => f.inputValue())), ['UNINSTALL_KEY', 'Core', 'Installed by "the build"']);
  await save(page);
  await screenshot(page, 'gac-install-page');

  assert.equal(await page.locator('#dirty-marker').isHidden(), true);
  const actions = await readProject(page, project);
  assert.equal(actions.length, 1);
  assert.equal(actions[0].className, 'TGACInstallAction');
  assert.deepEqual(actions[0].properties, {
    AssemblyPath: '%ProjectDir%/bin/Core.dll',
    ReferenceCount: 'true',
    RefScheme: 'UNINSTALL_KEY',
    RefID: 'Core',
    RefDescription: 'Installed by "the build"',
  });

  // Unchecking the box disables the fields again; the texts stay on the page.
  await settled(page, () => box.click());
  for (const field of fields) assert.equal(await field.isDisabled(), true);
  assert.equal(await fields[1].inputValue(), 'Core');
});

test('a C# compiler step keeps its tab until the main page is complete, and saves an option of its Options page', async (t) => {
  const { page, project } = await session(t, 'compile.mbproj');
  await addStep(page, 'Compilers', 'Microsoft C# Compiler');
  const tabs = await page.getByRole('tab').allTextContents();
  assert.ok(tabs.includes('Options'), `tabs: ${tabs}`);

  // The main page's own check keeps the user on it while it lacks the project folder.
  await page.getByRole('tab', { name: 'Options' }).click();
  await page.getByRole('dialog').getByText('Project Directory is required.').waitFor();
  await page.getByRole('dialog').getByRole('button', { name: 'OK' }).click();
  assert.notEqual(await page.getByRole('tab', { selected: true }).textContent(), 'Options');

  await page.getByLabel('Project Directory:').fill('%ProjectDir%');
  await page.getByLabel('File(s) to compile:').fill('src/*.cs');
  await settled(page, () => page.getByLabel('File(s) to compile:').press('Tab'));
  await page.getByRole('tab', { name: 'Options' }).click();
  await page.getByRole('tab', { name: 'Options', selected: true }).waitFor();
  await settled(page, () => page.getByLabel('Optimize code').click());
  assert.equal(await page.getByLabel('Optimize code').isChecked(), true);

  // The code-page picker answers in the page; OK needs a choice.
  await page.getByRole('button', { name: 'Browse: Code page' }).click();
  const picker = page.getByRole('dialog', { name: 'Choose a Code page' });
  const codePages = picker.getByLabel('Available Code Pages');
  await picker.getByRole('button', { name: 'OK' }).click();
  await picker.getByText('Please select a code page.').waitFor();
  const first = await codePages.locator('option').first().textContent();
  assert.match(first, /^\d+ - /);
  await codePages.selectOption({ index: 0 });
  await settled(page, () => picker.getByRole('button', { name: 'OK' }).click());
  const codePage = first.split(' ')[0];
  assert.equal(await page.getByLabel('Code page:').inputValue(), codePage);
  await screenshot(page, 'compiler-options-page');
  await save(page);

  const [action] = await readProject(page, project);
  assert.equal(action.className, 'TWrenCSharpCompilerAction');
  assert.equal(action.properties.Optimize, 'true');
  assert.equal(action.properties.ProjectDir, '%ProjectDir%');
  assert.equal(action.properties.Files, 'src/*.cs');
  assert.equal(action.properties.CodePage, codePage);
});

test('a project compiler takes its project file from its own file dialog', async (t) => {
  const { page, project, machine } = await session(t, (m) => {
    fs.mkdirSync(m.path('vs'));
    fs.writeFileSync(m.path('vs', 'App.csproj'), '<Project/>');
    fs.writeFileSync(m.path('vs', 'App.vbproj'), '<Project/>');
    return m.path('projects.mbproj');
  });
  await addStep(page, 'Compilers', 'Microsoft C# Project Compiler');
  await page.getByRole('button', { name: 'Browse ProjectFile' }).click();
  const chooser = page.getByRole('dialog', { name: 'Select Project File' });
  const entries = chooser.getByRole('listbox', { name: 'Folder contents' }).getByRole('option');
  await chooser.waitFor();
  assert.deepEqual(await chooser.getByLabel('Files of type').locator('option').allTextContents(), ['C# Projects (*.csproj)']);
  await entries.filter({ hasText: 'vs/' }).dblclick();
  await entries.filter({ hasText: 'App.csproj' }).waitFor();
  assert.deepEqual(await entries.allTextContents(), ['App.csproj']);
  await chooser.getByLabel('File name').fill('App');
  await settled(page, () => chooser.getByRole('button', { name: 'OK' }).click());
  // The editor's default extension completes a name typed without one.
  assert.equal(await page.getByLabel('ProjectFile', { exact: true }).inputValue(), machine.path('vs', 'App.csproj'));
  await save(page);
  const [action] = await readProject(page, project);
  assert.equal(action.className, 'TWrenCSProjCompilerAction');
  assert.equal(action.properties.ProjectFile, machine.path('vs', 'App.csproj'));
});

test('saving over a file changed on disk asks first, and a new variable is saved once the user agrees', async (t) => {
  const original = '<?xml version="1.0" encoding="UTF-8"?>\n<MarrowbyProject version="1">\n  <Actions>\n  </Actions>\n</MarrowbyProject>\n';
  const { page, project } = await session(t, (m) => {
    fs.writeFileSync(m.path('vars.mbproj'), original);
    return m.path('vars.mbproj');
  });
  await page.getByRole('button', { name: 'Add variable' }).click();
  await page.getByLabel('Variable 1 name').fill('OUT');
  await page.getByLabel('Variable 1 value').fill('%ProjectDir%/out');
  await settled(page, () => page.getByLabel('Variable 1 value').press('Tab'));
  assert.equal(await page.locator('#dirty-marker').isVisible(), true);

  const changed = original.replace('<Actions>', '<Actions><!-- edited elsewhere -->');
  fs.writeFileSync(project, changed);
  const question = page.getByRole('dialog').filter({ hasText: 'The file was changed on disk. Overwrite?' });
  await page.getByRole('button', { name: 'Save', exact: true }).click();
  await settled(page, () => question.getByRole('button', { name: 'No' }).click());
  assert.equal(fs.readFileSync(project, 'utf8'), changed);

  await page.getByRole('button', { name: 'Save', exact: true }).click();
  await question.getByRole('button', { name: 'Yes' }).click();
  await page.getByRole('status').filter({ hasText: /^Saved / }).waitFor();
  const saved = await page.evaluate((text) => {
    const doc = new DOMParser().parseFromString(text, 'application/xml');
    return [...doc.querySelectorAll('Variables > Variable')].map((v) => [v.getAttribute('name'), v.textContent]);
  }, fs.readFileSync(project, 'utf8'));
  assert.deepEqual(saved, [['OUT', '%ProjectDir%/out']]);
});

test('Tools > Options shows the .NET options page and OK stores the options', async (t) => {
  const { page, machine } = await session(t, 'options.mbproj', { mono: true });
  await page.getByRole('button', { name: 'Tools' }).click();
  await page.getByRole('menuitem', { name: 'Options...' }).click();
  const dialog = page.getByRole('dialog', { name: 'Options' });
  await dialog.getByRole('tab', { name: 'Microsoft .NET SDK' }).waitFor();
  const versions = dialog.locator('select[data-control]').first();
  const entries = await versions.locator('option').allTextContents();
  assert.ok(entries.length > 0 && entries.every((v) => /^v\d+\.\d+$/.test(v)), `versions: ${entries}`);
  const chosen = entries[entries.length - 1];
  await settled(page, () => versions.selectOption({ label: chosen }));
  await screenshot(page, 'tools-options');
  const saved = page.waitForResponse((r) => /\/api\/options\/\d+\/apply$/.test(r.url()));
  await dialog.getByRole('button', { name: 'OK' }).click();
  assert.equal((await saved).status(), 200);
  assert.equal(await dialog.isHidden(), true);
  const stored = fs.readFileSync(machine.optionsFile, 'utf8');
  assert.ok(stored.includes('DefaultSDKVersion') && stored.includes(chosen), stored);
});

test('the example project runs from the page and every step reports success', { timeout: 600_000 }, async (t) => {
  const { page } = await session(t, (machine) => {
    fs.cpSync(path.join(sourceDir, 'examples', 'hello'), machine.path('hello'), { recursive: true });
    return machine.path('hello', 'hello.mbproj');
  }, { mono: true });
  const steps = await page.locator('#steps > li').count();
  assert.ok(steps > 0);

  await page.getByRole('button', { name: 'Run', exact: true }).click();
  const log = page.getByRole('log');
  await log.locator('[data-build]').waitFor({ timeout: 540_000 });
  const results = await log.locator('[data-result]').evaluateAll((lines) => lines.map((l) => [l.dataset.step, l.dataset.result, l.textContent]));
  const failed = results.filter(([, result]) => result !== 'succeeded');
  assert.deepEqual(failed, [], await log.textContent());
  assert.equal(results.length, steps);
  assert.equal(await log.locator('[data-build]').getAttribute('data-build'), 'succeeded');
  for (let n = 1; n <= steps; n++) {
    assert.equal(await log.locator('.step-start', { hasText: `[${n}/${steps}] ` }).count(), 1);
  }
  await screenshot(page, 'run-log');

  // A dry run shows each tool's command instead of starting it.
  await page.getByRole('button', { name: 'Dry run' }).click();
  await page.getByRole('heading', { name: 'Dry run log' }).waitFor();
  await log.locator('[data-build]').waitFor({ timeout: 300_000 });
  assert.equal(await log.locator('[data-build]').getAttribute('data-build'), 'succeeded', await log.textContent());
  assert.ok(await log.locator('.dry', { hasText: 'executable:' }).count() > 0);
});

test('requests without the token or from another origin are refused', async (t) => {
  const { page, editor } = await session(t, 'secure.mbproj');
  const api = `${editor.origin}/api/project`;
  const status = async (url, headers = {}) => (await fetch(url, { headers })).status;

  assert.equal(await status(api, { 'X-Marrowby-Token': editor.token }), 200);
  const refused = [
    ['no token', api, {}],
    ['wrong token', api, { 'X-Marrowby-Token': '0'.repeat(32) }],
    ['page without token', `${editor.origin}/`, {}],
    ['run stream without token', `${editor.origin}/api/run/events`, {}],
    ['foreign origin', api, { 'X-Marrowby-Token': editor.token, Origin: 'http://evil.example' }],
    ['same host, other port', api, { 'X-Marrowby-Token': editor.token, Origin: 'http://127.0.0.1:1' }],
  ];
  for (const [why, url, headers] of refused) assert.equal(await status(url, headers), 403, why);

  // A rebound name reaches the same socket with a foreign Host header.
  const rebound = await new Promise((resolve, reject) => {
    http.get({ host: '127.0.0.1', port: editor.port, path: '/api/project',
      headers: { Host: `attacker.example:${editor.port}`, 'X-Marrowby-Token': editor.token } },
    (res) => { res.resume(); resolve(res.statusCode); }).on('error', reject);
  });
  assert.equal(rebound, 403);

  // The page's own origin without the header is refused too.
  const fromPage = await page.evaluate(async () => {
    const r = await fetch('/api/project');
    return { status: r.status, body: await r.json() };
  });
  assert.equal(fromPage.status, 403);
  assert.equal(typeof fromPage.body.error, 'string');
});
