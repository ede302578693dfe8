// The property editor page: draws the project, the steps' property pages and the options pages
// that `marrowby edit` serves, and sends every user change back to it. The server owns all state
// (page behaviour, enabled and visible flags, the project); the page only draws its answers.
'use strict';

const token = new URLSearchParams(location.search).get('token') || '';

const $ = (selector, root = document) => root.querySelector(selector);

/// Makes an element: el('button', {type: 'button'}, 'OK').
function el(tag, attrs = {}, ...children) {
  const node = document.createElement(tag);
  for (const [key, value] of Object.entries(attrs)) {
    if (value === undefined || value === null || value === false) continue;
    if (key === 'dataset') Object.assign(node.dataset, value);
    else if (key in node && typeof value !== 'string') node[key] = value;
    else node.setAttribute(key, value === true ? '' : value);
  }
  for (const child of children) {
    if (child === null || child === undefined) continue;
    node.append(child instanceof Node ? child : String(child));
  }
  return node;
}

class ApiError extends Error {
  constructor(status, data) {
    super((data && data.error) || `The editor answered ${status}`);
    this.status = status;
    this.data = data || {};
  }
}

async function api(method, path, body) {
  const headers = { 'X-Marrowby-Token': token };
  const init = { method, headers };
  if (body !== undefined) {
    headers['Content-Type'] = 'application/json';
    init.body = JSON.stringify(body);
  }
  let response;
  try {
    response = await fetch(path, init);
  } catch (e) {
    throw new ApiError(0, { error: 'The editor cannot be reached (was it stopped?)' });
  }
  let data = {};
  const text = await response.text();
  if (text) {
    try { data = JSON.parse(text); } catch { data = { error: text }; }
  }
  if (!response.ok) throw new ApiError(response.status, data);
  return data;
}

// Every user action runs in turn: an edit's change (sent when it loses focus) must reach the
// server before the click that took the focus away acts on the page.
// The body carries data-busy while any action is under way, so a test can wait for the page to settle.
let queue = Promise.resolve();
let busy = 0;
function act(work) {
  busy += 1;
  document.body.dataset.busy = 'true';
  const run = queue.then(work).catch(showError).finally(() => {
    busy -= 1;
    if (busy === 0) delete document.body.dataset.busy;
  });
  queue = run.then(() => {}, () => {});
  return run;
}

function setStatus(text, error = false) {
  const status = $('#status');
  status.textContent = text;
  status.classList.toggle('error', error);
}

function showError(e) {
  setStatus(e && e.message ? e.message : String(e), true);
  if (!(e instanceof ApiError)) console.error(e);
}

// --- Modal helpers -------------------------------------------------------------------------

/// Resolves with the value given to finish(), or undefined when the dialog is cancelled.
function modal(dialog, setup) {
  return new Promise((resolve) => {
    let done = false;
    const cleanup = [];
    const finish = (value) => {
      if (done) return;
      done = true;
      for (const undo of cleanup) undo();
      if (dialog.open) dialog.close();
      resolve(value);
    };
    const on = (target, type, handler) => {
      target.addEventListener(type, handler);
      cleanup.push(() => target.removeEventListener(type, handler));
    };
    on(dialog, 'cancel', (e) => { e.preventDefault(); finish(undefined); });
    for (const button of dialog.querySelectorAll('[data-close]')) on(button, 'click', () => finish(undefined));
    setup({ finish, on });
    if (!dialog.open) dialog.showModal();
  });
}

/// A message box with OK (or Yes/No when ask is true); resolves true for OK/Yes.
function messageBox(text, ask = false) {
  const dialog = $('#message-dialog');
  $('#message-text').textContent = text;
  $('#message-yes').hidden = !ask;
  $('#message-no').hidden = !ask;
  $('#message-ok').hidden = ask;
  return modal(dialog, ({ finish, on }) => {
    on($('#message-ok'), 'click', () => finish(true));
    on($('#message-yes'), 'click', () => finish(true));
    on($('#message-no'), 'click', () => finish(false));
    setTimeout(() => (ask ? $('#message-yes') : $('#message-ok')).focus());
  }).then((v) => v === true);
}

// --- File, folder and list dialogs -----------------------------------------------------------

/// "Text Files (*.txt)|*.txt|All Files (*.*)|*.*" → [{name, patterns: [RegExp]}].
function parseFilter(filter) {
  const parts = (filter || '').split('|');
  const types = [];
  for (let i = 0; i + 1 < parts.length; i += 2) {
    const patterns = parts[i + 1].split(';').map((p) => p.trim()).filter(Boolean).map(globToRegExp);
    types.push({ name: parts[i], patterns });
  }
  if (types.length === 0) types.push({ name: 'All Files (*.*)', patterns: [globToRegExp('*')] });
  return types;
}

/// Windows wildcards: case-insensitive, "*.*" matches every name.
function globToRegExp(glob) {
  if (glob === '*.*' || glob === '*') return /^.*$/s;
  const source = glob.replace(/[.+^${}()|[\]\\]/g, '\\$&').replace(/\*/g, '.*').replace(/\?/g, '.');
  return new RegExp(`^${source}$`, 'is');
}

function joinPath(dir, name) {
  if (!dir) return name;
  return dir.endsWith('/') || dir.endsWith('\\') ? dir + name : `${dir}/${name}`;
}

function splitPath(path) {
  const cut = Math.max(path.lastIndexOf('/'), path.lastIndexOf('\\'));
  if (cut < 0) return { dir: '', name: path };
  return { dir: path.slice(0, cut) || '/', name: path.slice(cut + 1) };
}

/// The in-page file (or folder) dialog; resolves with the chosen path or undefined.
async function browseDialog({ title, filter, initial, folders }) {
  const dialog = $('#file-dialog');
  $('#file-title').textContent = title || (folders ? 'Select Folder' : 'Select File');
  $('#file-name-row').hidden = !!folders;
  $('#file-type-row').hidden = !!folders;
  const error = $('.dialog-error', dialog);
  error.textContent = '';
  const types = parseFilter(filter);
  const typeSelect = $('#file-type');
  typeSelect.replaceChildren(...types.map((t, i) => el('option', { value: String(i) }, t.name)));
  typeSelect.selectedIndex = 0;
  const nameInput = $('#file-name-input');
  nameInput.value = '';
  let listing = null;
  let selectedDir = '';

  const draw = () => {
    const list = $('#file-entries');
    const type = types[typeSelect.selectedIndex] || types[0];
    const items = [];
    for (const entry of listing.entries) {
      if (!entry.dir && (folders || !type.patterns.some((re) => re.test(entry.name)))) continue;
      const item = el('li', { role: 'option', class: entry.dir ? 'dir' : 'file', tabindex: '-1',
        dataset: { name: entry.name, dir: entry.dir ? '1' : '' } },
        entry.dir ? `${entry.name}/` : entry.name);
      items.push(item);
    }
    list.replaceChildren(...items);
  };
  const open = async (path) => {
    try {
      listing = await api('GET', `/api/fs?path=${encodeURIComponent(path)}`);
    } catch (e) {
      error.textContent = e.message;
      return false;
    }
    error.textContent = '';
    selectedDir = '';
    $('#file-folder').value = listing.path;
    draw();
    return true;
  };

  // Start in the initial folder, or beside the initial file.
  if (!initial || !(await open(initial))) {
    const { dir, name } = splitPath(initial || '');
    if (!folders) nameInput.value = name;
    if (!(dir && (await open(dir)))) await open('');
  }

  return modal(dialog, ({ finish, on }) => {
    const list = $('#file-entries');
    on($('#file-up'), 'click', () => { if (listing.parent) open(listing.parent); });
    on($('#file-go'), 'click', () => open($('#file-folder').value));
    on($('#file-folder'), 'keydown', (e) => { if (e.key === 'Enter') { e.preventDefault(); open($('#file-folder').value); } });
    on(typeSelect, 'change', draw);
    on(list, 'click', (e) => {
      const item = e.target.closest('li');
      if (!item) return;
      for (const li of list.children) li.setAttribute('aria-selected', String(li === item));
      if (item.dataset.dir) selectedDir = item.dataset.name;
      else nameInput.value = item.dataset.name;
    });
    on(list, 'dblclick', (e) => {
      const item = e.target.closest('li');
      if (!item) return;
      if (item.dataset.dir) open(joinPath(listing.path, item.dataset.name));
      else finish(joinPath(listing.path, item.dataset.name));
    });
    on($('#file-ok'), 'click', () => {
      if (folders) {
        finish(selectedDir ? joinPath(listing.path, selectedDir) : listing.path);
        return;
      }
      const name = nameInput.value.trim();
      if (!name) {
        if (selectedDir) { open(joinPath(listing.path, selectedDir)); return; }
        error.textContent = 'Choose a file.';
        return;
      }
      finish(name.startsWith('/') || /^[A-Za-z]:[\\/]/.test(name) ? name : joinPath(listing.path, name));
    });
  });
}

/// A pick from a list (the code-page picker); resolves with the index or undefined.
function listDialog({ title, caption, items, initial }) {
  const dialog = $('#list-dialog');
  $('#list-title').textContent = title || '';
  $('#list-caption').textContent = caption || title || 'Items';
  const select = $('#list-items');
  select.replaceChildren(...(items || []).map((text, i) => el('option', { value: String(i) }, text)));
  // The page's current choice comes first selected.
  select.selectedIndex = (items || []).indexOf(initial);
  const error = $('.dialog-error', dialog);
  error.textContent = '';
  return modal(dialog, ({ finish, on }) => {
    on($('#list-ok'), 'click', () => {
      if (select.selectedIndex < 0) {
        error.textContent = 'Please select a code page.';
        return;
      }
      finish(select.selectedIndex);
    });
    on(select, 'dblclick', () => { if (select.selectedIndex >= 0) finish(select.selectedIndex); });
  });
}

/// Shows the dialog a page asked for; the answer goes back with the repeated event.
async function answerDialog(request) {
  if (request.type === 'list') {
    const index = await listDialog(request);
    return index === undefined ? { accepted: false } : { accepted: true, index };
  }
  const value = await browseDialog({
    title: request.title, filter: request.filter, initial: request.initial,
    folders: request.type === 'folder',
  });
  return value === undefined ? { accepted: false } : { accepted: true, value };
}

// --- The page renderer ---------------------------------------------------------------------

/// Draws a page's controls into host and keeps them in step with the server's answers. send(event)
/// posts one event and resolves with the server's answer.
class PageView {
  constructor(host, idPrefix, send, onChanged) {
    this.host = host;
    this.idPrefix = idPrefix;
    this.send = send;
    this.onChanged = onChanged;
    this.nodes = new Map(); // control name → {control, root, input}
    this.signature = '';
    // Controls whose own event is still on its way: an earlier answer must not undo their new value.
    this.pending = new Map(); // control name → number of unanswered events
  }

  id(name) {
    return `${this.idPrefix}-${name}`.replace(/[^A-Za-z0-9_-]/g, '_');
  }

  /// Redraws from a control list; the same controls keep their elements (and the focus).
  render(controls) {
    const signature = controls.map((c) => `${c.name}:${c.kind}:${c.parent}:${c.group}:${c.items ? c.items.length : 0}`).join('|');
    if (signature !== this.signature) this.build(controls);
    this.signature = signature;
    for (const control of controls) this.update(control);
  }

  build(controls) {
    this.nodes.clear();
    const root = el('div', { class: 'page-controls' });
    const containers = new Map([['', root]]);
    let lastCaption = '';
    for (const control of controls) {
      const node = this.make(control, lastCaption);
      this.nodes.set(control.name, node);
      (containers.get(control.parent || '') || root).append(node.root);
      if (control.kind === 'panel') containers.set(control.name, node.inner);
      if (['label', 'radio', 'checkbox'].includes(control.kind) && control.caption) lastCaption = control.caption;
      else if (control.kind === 'edit' && control.caption) lastCaption = control.caption;
    }
    this.host.replaceChildren(root);
  }

  /// The element of one control; its values are filled by update().
  make(control, nearCaption) {
    const id = this.id(control.name);
    const data = { control: control.name, kind: control.kind };
    const plainName = (control.caption || nearCaption || control.name).replace(/\s*:\s*$/, '');
    switch (control.kind) {
      case 'label': {
        const root = el('p', { class: 'ctl-label', dataset: data });
        return { root, input: root };
      }
      case 'edit': {
        const input = el('input', { type: 'text', id, dataset: data });
        const root = el('div', { class: 'field ctl-edit' });
        if (control.caption) root.append(el('label', { for: id }, control.caption));
        else input.setAttribute('aria-label', plainName);
        root.append(input);
        input.addEventListener('change', () => this.fire(control.name, { kind: 'change', text: input.value }));
        return { root, input };
      }
      case 'checkbox':
      case 'radio': {
        const input = el('input', { type: control.kind, id, dataset: data });
        if (control.kind === 'radio') input.name = this.id(`group-${control.group || 'default'}`);
        const text = el('span');
        const root = el('label', { class: `ctl-${control.kind}`, for: id }, input, text);
        // The box shows the click at once; the redraw from the server's answer has the last word.
        input.addEventListener('click', () => this.fire(control.name, { kind: 'click', checked: input.checked }));
        return { root, input, text };
      }
      case 'combo': {
        const input = el('select', { id, dataset: data });
        const root = el('div', { class: 'field ctl-combo' });
        if (control.caption) root.append(el('label', { for: id }, control.caption));
        else input.setAttribute('aria-label', plainName);
        root.append(input);
        input.addEventListener('change', () => this.fire(control.name, {
          kind: 'change', itemIndex: input.selectedIndex,
          text: input.selectedIndex >= 0 ? input.options[input.selectedIndex].text : '',
        }));
        return { root, input };
      }
      case 'memo': {
        const input = el('textarea', { id, rows: '5', dataset: data });
        const root = el('div', { class: 'field ctl-memo' });
        if (control.caption) root.append(el('label', { for: id }, control.caption));
        else input.setAttribute('aria-label', plainName);
        root.append(input);
        input.addEventListener('change', () => this.fire(control.name, { kind: 'change', lines: textLines(input.value) }));
        return { root, input };
      }
      case 'panel': {
        const legend = el('legend');
        const inner = el('div', { class: 'panel-body' });
        const root = el('fieldset', { class: 'ctl-panel', id, dataset: data }, legend, inner);
        return { root, input: root, legend, inner };
      }
      case 'button': {
        const input = el('button', { type: 'button', id, dataset: data });
        // A browse button says what it browses for: the field before it.
        if ((control.caption || '').trim() === '...') input.setAttribute('aria-label', `Browse: ${(nearCaption || control.name).replace(/\s*:\s*$/, '')}`);
        input.addEventListener('click', () => this.fire(control.name, { kind: 'click' }));
        return { root: input, input };
      }
      case 'grid': {
        const table = el('table', { class: 'ctl-grid', id, dataset: data });
        const root = el('div', { class: 'field ctl-grid-wrap' });
        if (control.caption) root.append(el('p', { class: 'grid-caption', id: `${id}-caption` }, control.caption));
        table.setAttribute('aria-label', (control.caption || control.name).replace(/\s*:\s*$/, ''));
        const add = el('button', { type: 'button', class: 'small' }, 'Add row');
        const remove = el('button', { type: 'button', class: 'small' }, 'Remove row');
        root.append(table, el('div', { class: 'grid-buttons' }, add, remove));
        const node = { root, input: table, add, remove, rows: [], titles: [], selectedRow: -1 };
        const sendRows = (rows) => this.fire(control.name, { kind: 'change', rows });
        table.addEventListener('change', () => sendRows(this.gridRows(node)));
        table.addEventListener('focusin', (e) => {
          const tr = e.target.closest('tr[data-row]');
          if (tr) node.selectedRow = Number(tr.dataset.row);
        });
        add.addEventListener('click', () => {
          const rows = this.gridRows(node);
          rows.push(node.titles.map(() => ''));
          sendRows(rows);
        });
        remove.addEventListener('click', () => {
          const rows = this.gridRows(node);
          if (rows.length === 0) return;
          const at = node.selectedRow >= 0 && node.selectedRow < rows.length ? node.selectedRow : rows.length - 1;
          rows.splice(at, 1);
          node.selectedRow = -1;
          sendRows(rows);
        });
        return node;
      }
      default: {
        const root = el('p', { class: 'ctl-unknown', dataset: data }, `(${control.kind} ${control.name})`);
        return { root, input: root };
      }
    }
  }

  gridRows(node) {
    return [...node.input.querySelectorAll('tbody tr')].map((tr) => [...tr.querySelectorAll('input')].map((i) => i.value));
  }

  /// Puts the server's state of one control on its element.
  update(control) {
    const node = this.nodes.get(control.name);
    if (!node) return;
    node.control = control;
    node.root.hidden = control.visible === false;
    const enabled = control.enabled !== false;
    const focused = document.activeElement === node.input || this.pending.has(control.name);
    switch (control.kind) {
      case 'label':
        node.input.textContent = control.caption || '';
        node.root.classList.toggle('disabled', !enabled);
        break;
      case 'edit':
        node.input.disabled = !enabled;
        if (!focused || node.input.value === (control.text || '')) node.input.value = control.text || '';
        break;
      case 'checkbox':
      case 'radio':
        node.text.textContent = control.caption || '';
        node.input.disabled = !enabled;
        if (!this.pending.has(control.name)) node.input.checked = !!control.checked;
        node.root.classList.toggle('disabled', !enabled);
        break;
      case 'combo': {
        const items = control.items || [];
        const current = [...node.input.options].map((o) => o.text);
        if (current.join('\n') !== items.join('\n') || current.length !== items.length) {
          node.input.replaceChildren(...items.map((t, i) => el('option', { value: String(i) }, t)));
        }
        if (!focused) node.input.selectedIndex = typeof control.itemIndex === 'number' ? control.itemIndex : -1;
        node.input.disabled = !enabled;
        break;
      }
      case 'memo': {
        node.input.disabled = !enabled;
        const text = (control.lines || []).join('\n');
        if (!focused) node.input.value = text;
        break;
      }
      case 'panel':
        node.legend.textContent = control.caption || '';
        node.legend.hidden = !control.caption;
        node.root.disabled = !enabled;
        break;
      case 'button':
        node.input.textContent = control.caption || control.name;
        node.input.disabled = !enabled;
        break;
      case 'grid':
        this.drawGrid(node, control, enabled);
        break;
      default:
        break;
    }
  }

  drawGrid(node, control, enabled) {
    const table = node.input;
    const titles = control.items || [];
    const rows = control.rows || [];
    const label = (control.caption || control.name).replace(/\s*:\s*$/, '');
    node.titles = titles;
    const head = el('thead', {}, el('tr', {}, ...titles.map((t) => el('th', { scope: 'col' }, t))));
    const body = el('tbody');
    rows.forEach((row, r) => {
      const tr = el('tr', { dataset: { row: String(r) } });
      const width = Math.max(titles.length, row.length);
      for (let c = 0; c < width; c++) {
        const input = el('input', { type: 'text', disabled: !enabled,
          'aria-label': `${label} row ${r + 1} ${titles[c] || `column ${c + 1}`}` });
        input.value = row[c] || '';
        tr.append(el('td', {}, input));
      }
      body.append(tr);
    });
    table.replaceChildren(head, body);
    node.add.disabled = !enabled;
    node.remove.disabled = !enabled || rows.length === 0;
  }

  /// Sends one user event; answers a dialog the page asks for, then redraws from the answer.
  fire(name, event) {
    const node = this.nodes.get(name);
    const control = node && node.control;
    const body = {
      control: name, kind: event.kind,
      text: event.text !== undefined ? event.text : (control && control.text) || '',
      checked: event.checked !== undefined ? event.checked : !!(control && control.checked),
      itemIndex: event.itemIndex !== undefined ? event.itemIndex : (control && typeof control.itemIndex === 'number' ? control.itemIndex : -1),
      lines: event.lines || (control && control.lines) || [],
      rows: event.rows || (control && control.rows) || [],
    };
    this.pending.set(name, (this.pending.get(name) || 0) + 1);
    const answered = () => {
      const left = this.pending.get(name) - 1;
      if (left > 0) this.pending.set(name, left);
      else this.pending.delete(name);
    };
    return act(async () => {
      let answer;
      try {
        answer = await this.send(body);
        if (answer.dialog) {
          body.answer = await answerDialog(answer.dialog);
          answer = await this.send(body);
        }
      } catch (e) {
        // A refused event leaves the page as the server has it.
        answered();
        if (control) this.update(control);
        throw e;
      }
      answered();
      if (answer.controls) this.render(answer.controls);
      if (this.onChanged) this.onChanged(answer);
    });
  }
}

function textLines(text) {
  if (text === '') return [];
  return text.replace(/\r\n?/g, '\n').split('\n');
}

// --- Tabs ----------------------------------------------------------------------------------

/// A tab strip; beforeLeave(from, to) may refuse the change by resolving false.
class Tabs {
  constructor(strip, panel, idPrefix) {
    this.strip = strip;
    this.panel = panel;
    this.idPrefix = idPrefix;
    this.active = 0;
    this.onSelect = () => {};
    this.beforeLeave = async () => true;
  }

  set(names, active = 0) {
    this.active = Math.min(Math.max(active, 0), Math.max(names.length - 1, 0));
    const buttons = names.map((name, i) => {
      const tab = el('button', { type: 'button', role: 'tab', id: `${this.idPrefix}-tab-${i}`,
        'aria-controls': this.panel.id, dataset: { tab: String(i) } }, name);
      tab.addEventListener('click', () => act(() => this.select(i)));
      return tab;
    });
    this.strip.replaceChildren(...buttons);
    this.strip.hidden = names.length === 0;
    this.mark();
  }

  mark() {
    [...this.strip.children].forEach((tab, i) => {
      tab.setAttribute('aria-selected', String(i === this.active));
      tab.tabIndex = i === this.active ? 0 : -1;
    });
    const tab = this.strip.children[this.active];
    if (tab) this.panel.setAttribute('aria-labelledby', tab.id);
  }

  async select(index) {
    if (index === this.active) return;
    if (!(await this.beforeLeave(this.active, index))) return;
    this.active = index;
    this.mark();
    this.onSelect(index);
  }
}

// --- The project -----------------------------------------------------------------------------

const state = {
  project: null,
  categories: [],
  selected: -1,
  pages: null, // the answer of GET /api/steps/{i}/pages
  views: [], // one PageView per page of the selected step
  pagesDirty: false,
  variables: [],
};

const stepTabs = new Tabs($('#step-tabs'), $('#step-page'), 'step');

async function loadProject() {
  state.project = await api('GET', '/api/project');
  drawProject();
}

function drawProject() {
  const project = state.project;
  const fileName = splitPath(project.file || '').name || 'Untitled';
  $('#file-name').textContent = fileName;
  $('#file-name').title = project.file || '';
  document.title = `${fileName}${project.dirty ? ' *' : ''} - Marrowby`;
  $('#dirty-marker').hidden = !(project.dirty || state.pagesDirty);
  if (state.selected >= project.steps.length) state.selected = project.steps.length - 1;
  drawSteps();
  drawVariables();
}

function drawSteps() {
  const steps = state.project.steps;
  const list = $('#steps');
  list.replaceChildren(...steps.map((step, i) => {
    const selected = i === state.selected;
    const check = el('input', { type: 'checkbox', checked: step.enabled !== false,
      'aria-label': `Enabled: ${i + 1}. ${step.displayName}` });
    check.addEventListener('change', () => act(async () => {
      await api('POST', `/api/steps/${i}/enabled`, { enabled: check.checked });
      await loadProject();
    }));
    const pick = el('button', { type: 'button', class: 'step-pick', 'aria-current': selected ? 'true' : undefined },
      el('span', { class: 'step-name' }, `${i + 1}. ${step.displayName}`),
      step.description ? el('span', { class: 'step-description' }, step.description) : null);
    pick.addEventListener('click', () => act(() => selectStep(i)));
    const item = el('li', { class: `step${selected ? ' selected' : ''}${step.enabled === false ? ' disabled' : ''}`,
      dataset: { step: String(i), className: step.className } }, check, pick);
    const problems = step.problems || [];
    if (problems.length) {
      item.append(el('ul', { class: 'step-problems', 'aria-label': `Problems of step ${i + 1}` },
        ...problems.map((p) => el('li', { class: p.warning ? 'warning' : 'error' },
          p.field ? `${p.field}: ${p.message}` : p.message))));
    }
    return item;
  }));
  $('#steps-empty').hidden = steps.length > 0;
  const none = state.selected < 0;
  $('#step-remove').disabled = none;
  $('#step-duplicate').disabled = none;
  $('#step-up').disabled = none || state.selected === 0;
  $('#step-down').disabled = none || state.selected >= steps.length - 1;
}

/// Writes the open step's pages when they hold changes; false (with the page's message shown)
/// when a page refuses.
async function commitPages() {
  if (state.selected < 0 || !state.pagesDirty) return true;
  const answer = await api('POST', `/api/steps/${state.selected}/apply`);
  if (!answer.ok) {
    if (typeof answer.page === 'number' && answer.page !== stepTabs.active) {
      stepTabs.active = answer.page;
      stepTabs.mark();
      showStepPage(answer.page);
    }
    await messageBox(answer.message || 'The page cannot be applied.');
    return false;
  }
  state.pagesDirty = false;
  if (answer.step) {
    state.project.steps[state.selected] = answer.step;
    drawStepProblems(answer.step.problems || []);
  }
  await loadProject();
  return true;
}

async function selectStep(index) {
  if (index === state.selected && state.pages) return;
  if (!(await commitPages())) return;
  state.selected = index;
  state.pages = null;
  drawSteps();
  await openPages(0);
}

/// (Re)opens the selected step's pages on the server and draws them.
async function openPages(activeTab = stepTabs.active) {
  const editor = $('#step-editor');
  if (state.selected < 0) {
    editor.hidden = true;
    $('#no-step').hidden = false;
    state.pages = null;
    return;
  }
  const index = state.selected;
  const step = state.project.steps[index];
  const answer = await api('GET', `/api/steps/${index}/pages`);
  state.pages = answer;
  state.pagesDirty = false;
  editor.hidden = false;
  $('#no-step').hidden = true;
  $('#step-title').textContent = `${index + 1}. ${step.displayName}`;
  $('#step-description').value = step.description || '';
  drawPropertyEditors(answer.editors || []);
  state.views = (answer.pages || []).map((page) => new PageView($('#step-page'), `s${index}p${page.index}`,
    (body) => api('POST', `/api/steps/${index}/pages/${page.index}/event`, body),
    (reply) => {
      if (reply.controls) page.controls = reply.controls;
      state.pagesDirty = true;
      $('#dirty-marker').hidden = false;
    }));
  stepTabs.set((answer.pages || []).map((p) => p.name || p.frameClass || `Page ${p.index + 1}`), activeTab);
  showStepPage(stepTabs.active);
  drawStepProblems(answer.problems || step.problems || []);
}

function showStepPage(i) {
  const page = state.pages && state.pages.pages[i];
  const view = state.views[i];
  if (!page || !view) {
    $('#step-page').replaceChildren();
    return;
  }
  view.signature = '';
  view.render(page.controls || []);
}

// Leaving a tab runs the page's own check; its message is shown instead of leaving.
stepTabs.beforeLeave = async (from) => {
  if (!state.pages) return true;
  const page = state.pages.pages[from];
  const answer = await api('POST', `/api/steps/${state.selected}/pages/${page.index}/check`);
  if (answer.ok) return true;
  await messageBox(answer.message || 'The page is not complete.');
  return false;
};
stepTabs.onSelect = showStepPage;

function drawStepProblems(problems) {
  const section = $('#step-problems');
  section.hidden = problems.length === 0;
  $('ul', section).replaceChildren(...problems.map((p) => el('li', { class: p.warning ? 'warning' : 'error' },
    p.field ? `${p.field}: ${p.message}` : p.message)));
}

/// Property editors (the project file of a project compiler): a field with "..." for the file dialog.
function drawPropertyEditors(editors) {
  const host = $('#property-editors');
  host.replaceChildren(...editors.map((editor) => {
    const id = `editor-${editor.property}`.replace(/[^A-Za-z0-9_-]/g, '_');
    const input = el('input', { type: 'text', id, dataset: { property: editor.property } });
    input.value = editor.value || '';
    const browse = el('button', { type: 'button', 'aria-label': `Browse ${editor.property}`, title: editor.title }, '...');
    const setValue = async (value) => {
      // The server reads the open pages again from the step, so their own changes go in first.
      if (!(await commitPages())) return;
      const answer = await api('PUT', `/api/steps/${state.selected}/properties/${encodeURIComponent(editor.property)}`, { value });
      if (answer.step) state.project.steps[state.selected] = answer.step;
      await loadProject();
      await openPages();
    };
    input.addEventListener('change', () => act(() => setValue(input.value)));
    browse.addEventListener('click', () => act(async () => {
      const filter = editor.filter || '';
      const chosen = await browseDialog({ title: editor.title, filter, initial: input.value });
      if (chosen === undefined) return;
      await setValue(withDefaultExtension(chosen, editor.defaultExtension));
    }));
    return el('div', { class: 'field property-editor' }, el('label', { for: id }, editor.property), input, browse);
  }));
}

function withDefaultExtension(path, extension) {
  if (!extension) return path;
  const { name } = splitPath(path);
  return name.includes('.') ? path : `${path}.${extension}`;
}

$('#step-description').addEventListener('change', () => {
  const input = $('#step-description');
  act(async () => {
    if (state.selected < 0) return;
    await api('POST', `/api/steps/${state.selected}/description`, { description: input.value });
    await loadProject();
  });
});

async function applyStep(close) {
  state.pagesDirty = true; // Apply always writes, so Validate's problems are fresh.
  if (!(await commitPages())) return;
  setStatus('Applied.');
  if (close) {
    state.selected = -1;
    state.pages = null;
    drawSteps();
    await openPages();
  }
}
$('#step-apply').addEventListener('click', () => act(() => applyStep(false)));
$('#step-ok').addEventListener('click', () => act(() => applyStep(true)));

// --- Step commands --------------------------------------------------------------------------

async function afterStructureChange(select) {
  state.selected = select;
  state.pages = null;
  await loadProject();
  await openPages(0);
}

$('#step-add').addEventListener('click', () => act(async () => {
  if (!(await commitPages())) return;
  if (state.categories.length === 0) state.categories = (await api('GET', '/api/actions')).categories || [];
  const className = await modal($('#add-dialog'), ({ finish }) => {
    $('#add-categories').replaceChildren(...state.categories.map((category) => {
      const id = `category-${category.name}`.replace(/[^A-Za-z0-9_-]/g, '_');
      return el('section', { class: 'category', 'aria-labelledby': id },
        el('h3', { id }, category.name),
        el('ul', {}, ...category.actions.map((action) => {
          const button = el('button', { type: 'button', dataset: { className: action.className } }, action.displayName);
          button.addEventListener('click', () => finish(action.className));
          return el('li', {}, button);
        })));
    }));
  });
  if (!className) return;
  const body = { className };
  if (state.selected >= 0) body.position = state.selected + 1;
  const answer = await api('POST', '/api/steps', body);
  await afterStructureChange(answer.index);
}));

$('#step-remove').addEventListener('click', () => act(async () => {
  const i = state.selected;
  if (i < 0) return;
  await api('POST', `/api/steps/${i}/remove`);
  state.pagesDirty = false;
  await afterStructureChange(Math.min(i, state.project.steps.length - 2));
}));

$('#step-duplicate').addEventListener('click', () => act(async () => {
  if (state.selected < 0 || !(await commitPages())) return;
  const answer = await api('POST', `/api/steps/${state.selected}/duplicate`);
  await afterStructureChange(answer.index);
}));

function moveBy(delta) {
  return act(async () => {
    const i = state.selected;
    const to = i + delta;
    if (i < 0 || to < 0 || to >= state.project.steps.length || !(await commitPages())) return;
    await api('POST', `/api/steps/${i}/move`, { to });
    await afterStructureChange(to);
  });
}
$('#step-up').addEventListener('click', () => moveBy(-1));
$('#step-down').addEventListener('click', () => moveBy(1));

// --- Variables ------------------------------------------------------------------------------

function drawVariables() {
  // Rows being typed in keep their text; a redraw only follows the server when nothing is focused.
  const body = $('#variables tbody');
  if (body.contains(document.activeElement)) return;
  state.variables = (state.project.variables || []).map((v) => ({ name: v.name, value: v.value }));
  redrawVariableRows();
}

function redrawVariableRows() {
  const body = $('#variables tbody');
  body.replaceChildren(...state.variables.map((variable, i) => {
    const name = el('input', { type: 'text', 'aria-label': `Variable ${i + 1} name`, value: variable.name });
    const value = el('input', { type: 'text', 'aria-label': `Variable ${i + 1} value`, value: variable.value });
    name.value = variable.name;
    value.value = variable.value;
    const remove = el('button', { type: 'button', class: 'small', 'aria-label': `Remove variable ${i + 1}` }, 'Remove');
    name.addEventListener('change', () => { variable.name = name.value.trim(); saveVariables(); });
    value.addEventListener('change', () => { variable.value = value.value; saveVariables(); });
    remove.addEventListener('click', () => {
      state.variables.splice(i, 1);
      redrawVariableRows();
      saveVariables();
    });
    return el('tr', {}, el('td', {}, name), el('td', {}, value), el('td', {}, remove));
  }));
}

function saveVariables() {
  return act(async () => {
    const variables = state.variables.filter((v) => v.name !== '').map((v) => ({ name: v.name, value: v.value }));
    await api('PUT', '/api/variables', { variables });
    const project = await api('GET', '/api/project');
    state.project = project;
    $('#dirty-marker').hidden = !(project.dirty || state.pagesDirty);
  });
}

$('#variable-add').addEventListener('click', () => {
  state.variables.push({ name: '', value: '' });
  redrawVariableRows();
  const inputs = $('#variables tbody').querySelectorAll('tr:last-child input');
  if (inputs[0]) inputs[0].focus();
});

// --- Save -----------------------------------------------------------------------------------

async function save() {
  if (!(await commitPages())) return false;
  try {
    await api('POST', '/api/save', {});
  } catch (e) {
    if (!(e instanceof ApiError && e.status === 409 && e.data.conflict)) throw e;
    if (!(await messageBox('The file was changed on disk. Overwrite?', true))) {
      setStatus('Not saved.');
      return false;
    }
    await api('POST', '/api/save', { force: true });
  }
  await loadProject();
  setStatus(`Saved ${splitPath(state.project.file).name}`);
  return true;
}
$('#cmd-save').addEventListener('click', () => act(save));
document.addEventListener('keydown', (e) => {
  if ((e.ctrlKey || e.metaKey) && e.key.toLowerCase() === 's') {
    e.preventDefault();
    if (document.activeElement) document.activeElement.blur();
    act(save);
  }
});

// --- Tools > Options ------------------------------------------------------------------------

const toolsButton = $('#cmd-tools');
const toolsItems = $('#tools-menu .menu-items');
function showToolsMenu(open) {
  toolsItems.hidden = !open;
  toolsButton.setAttribute('aria-expanded', String(open));
}
toolsButton.addEventListener('click', () => showToolsMenu(toolsItems.hidden));
document.addEventListener('click', (e) => {
  if (!e.target.closest('#tools-menu')) showToolsMenu(false);
});

$('#cmd-options').addEventListener('click', () => {
  showToolsMenu(false);
  act(openOptions);
});

async function openOptions() {
  const answer = await api('GET', '/api/options');
  const tabs = [];
  for (const options of answer.options || []) {
    for (const page of options.pages || []) {
      const many = options.pages.length > 1;
      tabs.push({ options, page, name: many && page.name ? `${options.name}: ${page.name}` : (options.name || page.name) });
    }
  }
  const panel = $('#options-page');
  const strip = new Tabs($('#options-tabs'), panel, 'options');
  const views = tabs.map((t) => new PageView(panel, `o${t.options.index}p${t.page.index}`,
    (body) => api('POST', `/api/options/${t.options.index}/pages/${t.page.index}/event`, body),
    (reply) => { if (reply.controls) t.page.controls = reply.controls; }));
  const show = (i) => {
    if (!tabs[i]) { panel.replaceChildren(el('p', { class: 'hint' }, 'No options pages are registered.')); return; }
    views[i].signature = '';
    views[i].render(tabs[i].page.controls || []);
  };
  strip.onSelect = show;
  strip.set(tabs.map((t) => t.name), 0);
  show(0);
  // Not awaited: the pages' own events go through the queue while the dialog is open.
  modal($('#options-dialog'), ({ finish, on }) => {
    on($('#options-ok'), 'click', () => finish(true));
  }).then((accepted) => {
    if (!accepted) return;
    act(async () => {
      const applied = new Set();
      for (const t of tabs) {
        if (applied.has(t.options.index)) continue;
        applied.add(t.options.index);
        await api('POST', `/api/options/${t.options.index}/apply`);
      }
      setStatus('Options saved.');
    });
  });
}

// --- Run ------------------------------------------------------------------------------------

const run = { source: null, total: 0, names: new Map(), going: false, follow: true };

// The log follows new lines until the user scrolls up to read, and again once they scroll back down.
$('#run-log').addEventListener('scroll', () => {
  const log = $('#run-log');
  run.follow = log.scrollTop + log.clientHeight >= log.scrollHeight - 8;
});

function logLine(text, kind, attrs = {}) {
  const log = $('#run-log');
  log.append(el('div', { class: `line ${kind}`, ...attrs }, text));
  if (run.follow) log.scrollTop = log.scrollHeight;
}

function setRunning(going) {
  run.going = going;
  $('#cmd-run').disabled = going;
  $('#cmd-dry-run').disabled = going;
  $('#cmd-stop').disabled = !going;
  $('#run-state').textContent = going ? 'running...' : '';
}

function seconds(value) {
  return typeof value === 'number' ? `${value.toFixed(2)} s` : '';
}

/// One event of the build's JSON stream, shown the way the command line shows it.
function showRunEvent(event) {
  const step = event.step;
  const head = () => `[${step}/${run.total}]`;
  switch (event.event) {
    case 'start':
      // A stream that reconnects is sent the run from its start again.
      $('#run-log').replaceChildren();
      break;
    case 'error':
      logLine(`${event.file}${event.line ? `:${event.line}` : ''}: ${event.message}`, 'error');
      break;
    case 'invalid':
      logLine(`${step ? `step ${step}: ` : ''}${event.field ? `${event.field}: ` : ''}${event.message}`,
        event.severity === 'warning' ? 'warning' : 'error', { dataset: { step: String(step) } });
      break;
    case 'step': {
      run.total = event.total;
      const title = `${head()} ${event.name}${event.description ? ` (${event.description})` : ''}`;
      run.names.set(step, event.name);
      logLine(title, 'step-start', { dataset: { step: String(step) } });
      break;
    }
    case 'log':
      logLine(`    ${event.text}`, `log ${event.stream}`, { dataset: { step: String(step) } });
      break;
    case 'dry-run':
      if (event.executable) {
        logLine(`    executable:   ${event.executable}`, 'dry');
        logLine(`    argv:         ${JSON.stringify(event.argv || [])}`, 'dry');
        logLine(`    command line: ${event.commandLine}`, 'dry');
        logLine(`    working dir:  ${event.workingDir || '(current)'}`, 'dry');
        if (event.responseFile) {
          logLine(`    response file ${event.responseFile.path}:`, 'dry');
          for (const line of (event.responseFile.text || '').split(/\r?\n/)) if (line) logLine(`      ${line}`, 'dry');
        }
      } else {
        const diffs = event.diffs || [];
        if (diffs.length === 0) logLine('    (would change no file)', 'dry');
        for (const d of diffs) {
          logLine(`    would change ${d.file}:`, 'dry');
          for (const line of d.diff.split('\n')) if (line) logLine(`    ${line}`, `dry diff${line[0] === '+' ? ' add' : line[0] === '-' ? ' del' : ''}`);
        }
      }
      break;
    case 'result': {
      const attrs = { dataset: { step: String(step), result: event.success ? 'succeeded' : 'failed' } };
      if (event.skipped) logLine(`${head()} skipped (${event.skipReason || 'not run'})`, 'result skipped', attrs);
      else if (event.success) logLine(`${head()} succeeded in ${seconds(event.seconds)}`, 'result ok', attrs);
      else logLine(`${head()} failed in ${seconds(event.seconds)}: ${event.reason || 'the step failed'}`, 'result failed', attrs);
      break;
    }
    case 'build': {
      const what = run.dryRun ? 'Dry run' : 'Build';
      let text;
      if (event.invalid) text = 'Build not started: the project has validation problems.';
      else if (event.stopped) text = `${what} stopped by user request after ${seconds(event.seconds)}`;
      else if (event.success) text = `${what} succeeded in ${seconds(event.seconds)}`;
      else text = `${what} failed`;
      logLine(text, `summary ${event.success ? 'ok' : 'failed'}`, { dataset: { build: event.success ? 'succeeded' : 'failed' } });
      setRunning(false);
      closeRunStream();
      break;
    }
    default:
      break;
  }
}

function closeRunStream() {
  if (run.source) run.source.close();
  run.source = null;
}

async function startRun(dryRun) {
  if (!(await commitPages())) return;
  closeRunStream();
  await api('POST', '/api/run', { dryRun });
  run.total = 0;
  run.dryRun = dryRun;
  run.names.clear();
  $('#run-log').replaceChildren();
  run.follow = true;
  $('#run-panel').hidden = false;
  $('#run-heading').textContent = dryRun ? 'Dry run log' : 'Run log';
  setRunning(true);
  const source = new EventSource(`/api/run/events?token=${encodeURIComponent(token)}`);
  run.source = source;
  source.onmessage = (message) => {
    let event;
    try { event = JSON.parse(message.data); } catch { return; }
    showRunEvent(event);
  };
  source.onerror = () => {
    // The server closes the stream after the build's end; anything else is a lost connection.
    if (run.going && source.readyState === EventSource.CLOSED) {
      logLine('The connection to the editor was lost.', 'error');
      setRunning(false);
    }
  };
}

$('#cmd-run').addEventListener('click', () => act(() => startRun(false)));
$('#cmd-dry-run').addEventListener('click', () => act(() => startRun(true)));
$('#cmd-stop').addEventListener('click', () => act(async () => {
  await api('POST', '/api/run/stop');
  $('#run-state').textContent = 'stopping...';
}));
$('#run-close').addEventListener('click', () => { $('#run-panel').hidden = true; });

// --- Start ----------------------------------------------------------------------------------

window.addEventListener('beforeunload', (e) => {
  if (state.project && (state.project.dirty || state.pagesDirty)) e.preventDefault();
});

act(async () => {
  if (!token) throw new Error('The page was opened without its token; use the address marrowby edit printed.');
  await loadProject();
  setStatus(state.project.exists ? '' : 'New project: the file is created on the first save.');
  document.body.dataset.ready = 'true';
});
