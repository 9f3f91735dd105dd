// What the page does with the trees of trees.js: draws their links, tells what became of a node, and goes from one to
// another.

// ---- Where rows are ------------------------------------------------------------------------------------------------

let rowHeight = 24;

function measure() {
    rowHeight = request.rows[0]?.getBoundingClientRect().height ?? rowHeight;
}

const topOf = (node) => node.index * rowHeight - node.tree.element.scrollTop;
const inView = (node) => topOf(node) >= 0 && topOf(node) + rowHeight <= node.tree.element.clientHeight;

function scrollTo(node, top) {
    node.tree.element.scrollTop = node.index * rowHeight - top;
}

// A node next to those in view comes to the edge, one from farther off to the middle.
function show(node) {
    if (inView(node)) {
        return;
    }
    const lowest = node.tree.element.clientHeight - rowHeight;
    const edge = topOf(node) < 0 ? 0 : lowest;
    scrollTo(node, Math.abs(topOf(node) - edge) > 2 * rowHeight ? lowest / 2 : edge);
}

// ---- Drawing the links of the rows in view -------------------------------------------------------------------------

const svg = document.getElementById('links');
const strokes = Object.fromEntries(['', 'lost', 'lit', 'lit lost'].map((name) => {
    const path = document.createElementNS('http://www.w3.org/2000/svg', 'path');
    path.setAttribute('class', name);
    svg.append(path);
    return [name, path];
}));
let litLinks = new Set();
let drawing = false;

function draw() {
    drawing = false;
    const shown = new Set();
    for (const tree of trees) {
        const first = Math.floor(tree.element.scrollTop / rowHeight);
        const end = Math.ceil((tree.element.scrollTop + tree.element.clientHeight) / rowHeight);
        tree.nodes.slice(first, end).forEach((node) => node.links.forEach((link) => shown.add(link)));
    }
    const { width } = svg.getBoundingClientRect();
    const lines = { '': '', lost: '', lit: '', 'lit lost': '' };
    for (const link of shown) {
        const from = topOf(link.from) + rowHeight / 2;
        const to = topOf(link.to) + rowHeight / 2;
        const names = [litLinks.has(link) ? 'lit' : '', link.lost ? 'lost' : ''];
        lines[names.join(' ').trim()] +=
            `M0,${from}C${width / 2},${from} ${width / 2},${to} ${width},${to}`;
    }
    for (const [name, path] of Object.entries(strokes)) {
        path.setAttribute('d', lines[name]);
    }
}

function drawSoon() {
    if (!drawing) {
        drawing = true;
        requestAnimationFrame(draw);
    }
}

// ---- The details of a node -----------------------------------------------------------------------------------------

const [details, what, said, about] = ['details', 'what', 'said', 'about'].map((id) => document.getElementById(id));

function linkTo(node, content = text(node.path)) {
    return button(content, () => {
        select(node);
        node.tree.element.focus({ preventScroll: true });
    });
}

function numbers(positions) {
    return positions.flatMap((position, i) => {
        const add = explanation.adds[position];
        return [i > 0 ? ', ' : '', linkTo(request.nodes[add.node], add.number)];
    });
}

// What became of an add.
function outcomeOf(add) {
    const outcome = [];
    if (add.lost_to !== undefined) {
        outcome.push(element('span', { class: 'lost' }, ', lost to '), ...numbers([add.lost_to]));
    }
    if (add.wins_over !== undefined) {
        outcome.push(', wins over ', ...numbers(add.wins_over));
    }
    if (add.not_taken !== undefined) {
        outcome.push(element('span', { class: 'lost' }, ', not taken: ' + add.not_taken));
    } else if (add.result === undefined) {
        outcome.push(element('span', { class: 'lost' }, ', not in the result'));
    }
    return outcome;
}

function facts(pairs) {
    const list = element('dl', {});
    for (const [name, ...content] of pairs) {
        list.append(element('dt', {}, name), element('dd', {}, ...content));
    }
    return list;
}

function requestDetails(node) {
    const functions = element('ul', {});
    const left = node.adds.map((position) => explanation.adds[position]);
    const list = (mapper) => {
        const adds = element('ul', {});
        while (left.length > 0 && left[0].mapper === mapper) {
            const add = left.shift();
            const path = add.result === undefined ? text(add.path) : linkTo(results.nodes[add.result], text(add.path));
            adds.append(element('li', {}, add.number + ' ', path, ...valueOf(add), ...operationOfAdd(add), ...outcomeOf(add)));
        }
        functions.append(element('li', {}, mapper, adds));
    };
    node.mappers.forEach(list);
    while (left.length > 0) { // of a function that went on after another that it had called
        list(left[0].mapper);
    }
    return functions;
}

function resultDetails(node) {
    const adds = element('ul', {});
    for (const position of node.adds) {
        const add = explanation.adds[position];
        adds.append(element('li', {}, add.number + ' for ', linkTo(request.nodes[add.node]), ` by ${add.mapper}`,
            ...valueOf(add), ...operationOfAdd(add), ...outcomeOf(add)));
    }
    return node.adds.length > 0 ? adds : element('p', {}, 'Made on the way to the nodes below it.');
}

// What is read out of the details: what became of a node, and how much lights up.
function verdict(node) {
    const counterparts = counterpartsOf(node).length;
    const lights = counterparts === 0 ? 'no counterpart' : counted(counterparts, 'counterpart');
    if (node.fate === undefined) {
        return [lights];
    }
    const reason = node.reason === undefined ? [] : [': ', text(node.reason)];
    return [element('span', { class: node.fate }, node.fate, ...reason), '; ' + lights];
}

function describe(node) {
    details.scrollTop = 0;
    if (node === null) {
        what.replaceChildren();
        said.replaceChildren();
        about.replaceChildren(element('p', {}, 'Point at a node: its counterparts light up, and here stands what ' +
            'became of it. A click holds it. With the keyboard: arrow keys walk through a tree, Enter goes to the ' +
            'counterpart, Escape lets go, and / finds.'));
        return;
    }
    const known = [];
    if (node.value !== undefined) {
        known.push(['value', text(node.value)]);
    }
    if (node.operation !== undefined) {
        known.push(['operation', node.operation]);
    }
    if (node.ns !== undefined) {
        known.push(['namespace', text(node.ns)]);
    }
    what.replaceChildren(text(node.path));
    said.replaceChildren(...verdict(node));
    about.replaceChildren(facts(known), node.tree === request ? requestDetails(node) : resultDetails(node));
}

// ---- Pointing and selecting ----------------------------------------------------------------------------------------

let selected = null; // held until another is
let pointed = null; // goes before it while the pointer is there
let litRows = [];

function light() {
    const node = pointed ?? selected;
    litRows.forEach((row) => row.classList.remove('lit', 'current'));
    litLinks = new Set(node === null ? [] : linksOf(node));
    litRows = node === null ? [] : counterpartsOf(node).map((counterpart) => counterpart.tree.rows[counterpart.index]);
    litRows.forEach((row) => row.classList.add('lit'));
    if (node !== null) {
        const row = node.tree.rows[node.index];
        row.classList.add('lit', 'current');
        litRows.push(row);
    }
    drawSoon();
}

// Selects a node and shows it, and on the same height, unless one is in view, its first counterpart.
function select(node) {
    request.element.removeAttribute('aria-activedescendant');
    results.element.removeAttribute('aria-activedescendant');
    selected?.tree.rows[selected.index].removeAttribute('aria-selected');
    selected = node;
    pointed = null;
    if (node !== null) {
        const row = node.tree.rows[node.index];
        row.setAttribute('aria-selected', 'true');
        node.tree.element.setAttribute('aria-activedescendant', row.id);
        node.tree.last = node.index;
        const counterparts = counterpartsOf(node);
        show(node);
        if (counterparts.length > 0 && !counterparts.some(inView)) {
            scrollTo(counterparts[0], topOf(node));
        }
        row.scrollIntoView({ block: 'nearest', inline: 'nearest' }); // of the page, where the window is too low for it
    }
    light();
    describe(node);
}

const moves = {
    ArrowDown: (node) => node.tree.nodes[node.index + 1],
    ArrowUp: (node) => node.tree.nodes[node.index - 1],
    ArrowLeft: (node) => node.parent,
    ArrowRight: (node) => (node.end > node.index + 1 ? node.tree.nodes[node.index + 1] : undefined),
    Home: (node) => node.tree.nodes[0],
    End: (node) => node.tree.nodes.at(-1),
    PageDown: (node) => node.tree.nodes[Math.min(node.index + pageOf(node.tree), node.tree.nodes.length - 1)],
    PageUp: (node) => node.tree.nodes[Math.max(node.index - pageOf(node.tree), 0)],
};
const pageOf = (tree) => Math.max(1, Math.floor(tree.element.clientHeight / rowHeight) - 1);

function cross() {
    const counterpart = selected === null ? undefined : counterpartsOf(selected)[0];
    if (counterpart !== undefined) {
        select(counterpart);
        counterpart.tree.element.focus({ preventScroll: true });
    }
}

function nodeAt(event, tree) {
    const row = event.target.closest('[role="treeitem"]');
    return row === null ? null : tree.nodes[Number(row.id.slice(tree.element.id.length))];
}

// Pointing must not take away a link that has the focus.
const holdsFocus = () => details.contains(document.activeElement) && document.activeElement !== details;

function point(node) {
    if (node !== pointed) {
        pointed = node;
        light();
        if (!holdsFocus()) {
            describe(node ?? selected);
        }
    }
}

for (const tree of trees) {
    tree.element.addEventListener('scroll', drawSoon, { passive: true });
    // Moves alone: a row that is scrolled below the pointer by a key is not pointed at.
    tree.element.addEventListener('pointermove', (event) => point(nodeAt(event, tree)));
    tree.element.addEventListener('pointerleave', () => point(null));
    tree.element.addEventListener('click', (event) => {
        const node = nodeAt(event, tree);
        if (node !== null) {
            select(node);
        }
    });
    tree.element.addEventListener('keydown', (event) => {
        const move = moves[event.key];
        if (event.ctrlKey || event.metaKey || event.altKey) {
            return;
        }
        if (event.key === 'Enter') {
            cross();
        } else if (move !== undefined && tree.nodes.length > 0) {
            const last = tree.nodes[tree.last];
            const next = selected === last || ['Home', 'End'].includes(event.key) ? move(last) : last;
            if (next !== undefined) {
                select(next);
            }
        } else {
            return;
        }
        event.preventDefault();
    });
}

// ---- Jumping from node to node: what became of them, and what is looked for ----------------------------------------

const placeOf = (node) => (node.tree === request ? 0 : request.nodes.length) + node.index;

// To the next of the nodes, which are in order, from the selected one; round the end to the first.
function jump(nodes, step = 1) {
    const from = selected === null ? -1 : placeOf(selected);
    const after = nodes.findIndex((node) => placeOf(node) > from);
    const before = nodes.findLastIndex((node) => placeOf(node) < from);
    const next = step > 0 ? nodes[after === -1 ? 0 : after] : nodes.at(before);
    if (next !== undefined) {
        select(next);
    }
    return next;
}

function summarise() {
    const summary = document.getElementById('summary');
    summary.append(counted(request.nodes.length, 'node'));
    let separator = ': ';
    for (const fate of ['mapped', 'passed', 'dropped', 'refused', 'not reached']) {
        const nodes = request.nodes.filter((node) => node.fate === fate);
        if (nodes.length > 0) {
            summary.append(separator, button(`${nodes.length} ${fate}`, () => jump(nodes)));
            separator = ', ';
        }
    }
    summary.append('; ' + counted(explanation.adds.length, 'add'));
    const losers = request.nodes.filter((node) => node.adds.some((add) => explanation.adds[add].lost_to !== undefined));
    if (losers.length > 0) {
        const lost = explanation.adds.filter((add) => add.lost_to !== undefined).length;
        summary.append(', ', button(`${lost} lost`, () => jump(losers)));
    }
}

const find = document.getElementById('find');
const found = document.getElementById('found');
let matches = [];

// What can be looked for: what a row shows, and the functions behind it; by a text that begins with a "/" its path.
const searchable = (node) => [node.tree.rows[node.index].textContent, ...(node.mappers ?? [])].join(' ').toLowerCase();

function look() {
    const wanted = find.value.trim().toLowerCase();
    const matching = (node) => (wanted.startsWith('/') ? node.path.toLowerCase() : searchable(node)).includes(wanted);
    matches.forEach((node) => node.tree.rows[node.index].classList.remove('found'));
    matches = wanted === '' ? [] : trees.flatMap((tree) => tree.nodes.filter(matching));
    matches.forEach((node) => node.tree.rows[node.index].classList.add('found'));
    found.value = wanted === '' ? '' : `${matches.length} found`;
}

find.addEventListener('input', look);
find.addEventListener('keydown', (event) => {
    if (event.key === 'Enter' && matches.length > 0) {
        const node = jump(matches, event.shiftKey ? -1 : 1);
        found.value = `${matches.indexOf(node) + 1} of ${matches.length}`;
    }
});
document.addEventListener('keydown', (event) => {
    if (event.key === 'Escape') {
        if (details.contains(document.activeElement)) { // what has the focus there goes
            (selected?.tree ?? request).element.focus({ preventScroll: true });
        }
        select(null);
    } else if (event.key === '/' && document.activeElement !== find) {
        find.focus();
        event.preventDefault();
    }
});

// ---- The page ------------------------------------------------------------------------------------------------------

function title() {
    const [from, to] = explanation.reverse ? ['native', 'OpenConfig'] : ['OpenConfig', 'native'];
    const heading = `ocmap explain: ${explanation.kind}, ${from} to ${to}`;
    document.title = heading;
    document.querySelector('h1').append(heading);
    document.getElementById('request-title').append(`request (${from})`);
    document.getElementById('results-title').append(
        explanation.refusal === undefined ? `result (${to})` : `result (${to}) up to the refusal`);
}

function showRefusal() {
    const refusal = explanation.refusal;
    if (refusal === undefined) {
        return;
    }
    const line = document.getElementById('refusal');
    const node = request.nodes.find((candidate) => candidate.fate === 'refused');
    line.hidden = false;
    line.append('refused: ', text(refusal.text), refusal.code === undefined ? '' : ` (${refusal.code})`);
    if (node !== undefined) {
        line.append(', at ', linkTo(node));
    }
}

title();
summarise();
showRefusal();
new ResizeObserver(() => {
    measure();
    drawSoon();
}).observe(svg);
measure();
describe(null);
drawSoon();
