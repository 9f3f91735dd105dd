// The two trees of an explanation, the links between their nodes, and the rows that show them.
'use strict';

const explanation = JSON.parse(document.getElementById('explanation').textContent);

// ---- The two trees, and the links between their nodes --------------------------------------------------------------

// Adds to each node its tree, its place there, the end of its subtree, and room for its links.
function makeTree(id, nodes) {
    const tree = { element: document.getElementById(id), nodes, last: 0 };
    const open = [];
    const close = (depth, end) => {
        while (open.length > 0 && open.at(-1).depth >= depth) {
            open.pop().end = end;
        }
    };
    nodes.forEach((node, index) => {
        close(node.depth, index);
        Object.assign(node, { tree, index, parent: open.at(-1), links: [] });
        open.push(node);
    });
    close(0, nodes.length);
    return tree;
}

const request = makeTree('request', explanation.request);
const results = makeTree('results', explanation.results);
const trees = [request, results];

const links = new Map();
explanation.adds.forEach((add, index) => {
    add.number = '#' + (index + 1);
    if (add.result === undefined) {
        return;
    }
    const ends = add.node + ' ' + add.result;
    let link = links.get(ends);
    if (link === undefined) {
        link = { from: request.nodes[add.node], to: results.nodes[add.result], lost: true };
        link.from.links.push(link);
        link.to.links.push(link);
        links.set(ends, link);
    }
    // A link is as good as the best of its adds.
    link.lost &&= add.lost_to !== undefined || add.not_taken !== undefined;
});

// A node without links of its own stands for the nodes below it.
function linksOf(node) {
    return node.links.length > 0 ? node.links : node.tree.nodes.slice(node.index, node.end).flatMap((below) => below.links);
}

const across = (link, tree) => (tree === request ? link.to : link.from);
const counterpartsOf = (node) => [...new Set(linksOf(node).map((link) => across(link, node.tree)))];

// ---- Making elements -----------------------------------------------------------------------------------------------

function element(name, attributes, ...content) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        made.setAttribute(key, value);
    }
    made.append(...content);
    return made;
}

const counted = (number, thing) => `${number} ${thing}${number === 1 ? '' : 's'}`;

// A client's text: control and invisible characters made visible, and its writing direction kept to itself.
function text(value) {
    const shown = value.replace(/[\u0000-\u001f\u007f-\u009f\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/g, (c) => {
        const code = c.charCodeAt(0).toString(16);
        return code.length > 2 ? '\\u' + code.padStart(4, '0') : '\\x' + code.padStart(2, '0');
    });
    return element('bdi', {}, shown === '' ? '""' : shown);
}

function button(content, action) {
    const made = element('button', { type: 'button' }, content);
    made.addEventListener('click', action);
    return made;
}

function valueOf(thing) {
    return thing.value === undefined ? [] : [element('span', { class: 'value' }, ' = ', text(thing.value))];
}

function operationOf(thing) {
    return thing.operation === undefined ? [] : [element('span', { class: 'operation' }, ` (${thing.operation})`)];
}

// Of an add a merge goes without saying.
const operationOfAdd = (add) => (add.operation === 'merge' ? [] : operationOf(add));

const speaksForItself = ['mapped', 'passed'];

function makeRow(node) {
    const row = element('div', {
        class: node.fate === undefined ? '' : node.fate.replace(' ', '-'),
        id: node.tree.element.id + node.index,
        role: 'treeitem',
        'aria-level': node.depth + 1,
        style: '--depth: ' + node.depth,
    }, element('span', { class: 'tag' }, text(node.tag)), ...valueOf(node), ...operationOf(node));
    if (node.fate !== undefined && !speaksForItself.includes(node.fate)) {
        row.append(element('span', { class: 'label' }, ' ' + node.fate));
    }
    return row;
}

for (const tree of trees) {
    tree.rows = tree.nodes.map(makeRow);
    tree.element.append(...tree.rows);
    if (tree.rows.length === 0) {
        tree.element.append(element('div', { class: 'nothing' }, 'Nothing.'));
    }
}
