"""The page of `ocmap explain --html` in a real browser: what it shows, what lights up, and no error in its console."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

OCMAP, EXAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
TOP = '<macsec xmlns="http://openconfig.net/yang/macsec"><mka>'


def policies(entries):
    return ('<config xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0">' + TOP + '<policies>' + entries +
            '</policies></mka></macsec></config>')


def policy(name, leaves='', operation='merge'):
    return (f'<policy><name>{name}</name><config nc:operation="{operation}"><name>{name}</name>{leaves}</config>'
            '</policy>')


REPLACE = policies(policy('P1', '<key-server-priority>5</key-server-priority>', 'replace'))
REFUSED = '<use-updated-eth-header>true</use-updated-eth-header><delay-protection>true</delay-protection>'
LARGE = policies(''.join(policy(f'P{i}', f'<key-server-priority>{i % 256}</key-server-priority>'
                                '<delay-protection>true</delay-protection>') for i in range(350)))


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        options.binary_location = '/usr/bin/chromium'
        for argument in ('--headless=new', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage',
                         '--window-size=1200,800'):
            options.add_argument(argument)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
        cls.directory = tempfile.TemporaryDirectory()
        service = Service('/usr/bin/chromedriver', env={**os.environ, 'TMPDIR': cls.directory.name})
        cls.browser = webdriver.Chrome(service=service, options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.directory.cleanup()

    def setUp(self):
        self.emulate(1200, 700)

    def tearDown(self):
        self.assertEqual(self.browser.get_log('browser'), [])

    def emulate(self, width, height, **features):
        """A window's size, and what its reader prefers."""
        self.browser.execute_cdp_cmd('Emulation.setDeviceMetricsOverride', {
            'width': width, 'height': height, 'deviceScaleFactor': 1, 'mobile': False})
        self.browser.execute_cdp_cmd('Emulation.setEmulatedMedia', {'features': [
            {'name': name.replace('_', '-'), 'value': value} for name, value in features.items()]})

    def open(self, document, *options, status=0):
        """Explains a document, or a file, and shows the page; gives its text."""
        file = pathlib.Path(self.directory.name, 'page.html')
        source = document if isinstance(document, pathlib.Path) else '-'
        done = subprocess.run([OCMAP, 'explain', source, '--html', file, *options], text=True, capture_output=True,
                              input=None if source != '-' else document)
        self.assertEqual((done.returncode, done.stdout), (status, ''), done.stderr)
        self.browser.get(file.as_uri())
        return file.read_text()

    def script(self, text, *arguments):
        return self.browser.execute_script('return ' + text, *arguments)

    def text(self, id):
        return self.browser.find_element(By.ID, id).text

    def rows(self, css='[role=treeitem]'):
        return self.script('[...document.querySelectorAll(arguments[0])].map((row) => row.textContent)', css)

    def row(self, tree, text):
        """The first row with this text."""
        place = self.rows(f'#{tree} > *').index(text)
        return self.browser.find_element(By.CSS_SELECTOR, f'#{tree} > :nth-child({place + 1})')

    def move_to(self, element):
        ActionChains(self.browser, duration=0).move_to_element(element).perform()

    def point(self, tree, text):
        self.move_to(self.row(tree, text))

    def leave(self):
        self.move_to(self.browser.find_element(By.TAG_NAME, 'h1'))

    def press(self, *keys):
        ActionChains(self.browser, duration=0).send_keys(*keys).perform()

    def tab_to(self, css):
        for _ in range(20):
            if self.script('document.activeElement.matches(arguments[0])', css):
                return
            self.press(Keys.TAB)
        self.fail('no focus gets to ' + css)

    def facts(self):
        """The rows of the details: what is known of a node, and what the row says."""
        return self.rows('#about dt, #about dd')

    def lit(self):
        return self.rows('#request .lit'), self.rows('#results .lit')

    def lines(self, *classes):
        """How many links are drawn with each of the classes. They are drawn with the next frame."""
        self.browser.execute_async_script('requestAnimationFrame(() => requestAnimationFrame(arguments[0]))')
        return tuple(self.browser.find_element(By.CSS_SELECTOR, f'#links [class="{name}"]').get_attribute('d')
                     .count('M') for name in classes)

    def assert_joins(self, request, results):
        """The one link that is lit goes from the middle of the one row to that of the other, and from tree to tree."""
        self.assertEqual(self.lit_lines(), (1, 0))
        ends, rows = self.script('''((path, ...rows) => [
            [0, path.getTotalLength()].map((at) => path.getPointAtLength(at).matrixTransform(path.getScreenCTM())),
            rows.map((row) => [row, row.parentElement].map((element) => element.getBoundingClientRect()))
        ])(document.querySelector('#links [class=lit]'), ...arguments)''',
                                 self.row('request', request), self.row('results', results))
        for end, (row, tree), side in zip(ends, rows, ('right', 'left')):
            self.assertAlmostEqual(end['x'], tree[side], delta=2)
            self.assertAlmostEqual(end['y'], (row['top'] + row['bottom']) / 2, delta=2)

    def lit_lines(self):
        """Those that stand, and those that lost."""
        return self.lines('lit', 'lit lost')

    def test_shows_request_and_result(self):
        self.open(EXAMPLES / 'policies/merge.xml')
        self.assertEqual(self.browser.title, 'ocmap explain: edit, OpenConfig to native')
        self.assertEqual(self.rows('#request > *'),
                         ['macsec', 'mka', 'policies', 'policy', 'name = P1', 'config', 'name = P1',
                          'macsec-cipher-suite = GCM_AES_128', 'policy', 'name = P2', 'config', 'name = P2',
                          'key-server-priority = 20', 'delay-protection = false'])
        self.assertEqual(self.rows('#results > *'),
                         ['macsec', 'policy-names', 'policy-name', 'name = P1', 'created',
                          'cipher-suite = gcm-aes-128', 'policy-name', 'name = P2', 'created',
                          'key-server-priority = 20', 'delay-protection = false'])
        self.assertEqual(self.text('summary'), '14 nodes: 7 mapped, 7 passed; 9 adds')
        places = self.script("""[...document.querySelectorAll('#request > *')].map((row) =>
            [Number(row.ariaLevel), row.firstChild.getBoundingClientRect().left])""")
        self.assertEqual([level for level, _ in places], [1, 2, 3, 4, 5, 5, 6, 6, 4, 5, 5, 6, 6, 6])
        for level, left in places:
            self.assertAlmostEqual(left - places[0][1], (level - 1) * 18, delta=0.5)
        for tree in 'request', 'results':  # each below its title, for readers of the page and of its HTML
            title, place = self.script(f"""[...document.querySelectorAll('#{tree}-title, #{tree}-title + #{tree}')]
                .map((element) => element.getBoundingClientRect())""")
            self.assertEqual((title['left'], title['bottom'] < place['top']), (place['left'], True))
        self.assertEqual(self.script("performance.getEntriesByType('resource').length"), 0)
        self.open('<macsec xmlns="http://openconfig.net/yang/macsec"/>')
        self.assertEqual((self.text('summary'), self.rows('#results > *')), ('1 node: 1 passed; 0 adds', ['Nothing.']))

    def test_lights_counterparts(self):
        self.open(EXAMPLES / 'policies/merge.xml')
        self.assertEqual(self.lit(), ([], []))
        pair = 'macsec-cipher-suite = GCM_AES_128', 'cipher-suite = gcm-aes-128'
        self.point('request', pair[0])
        self.assertEqual(self.lit(), ([pair[0]], [pair[1]]))
        self.assertEqual(self.text('said'), 'mapped; 1 counterpart')
        self.assert_joins(*pair)
        self.emulate(900, 600)
        self.assert_joins(*pair)
        self.point('results', 'name = P2')
        self.assertEqual(self.lit(), (['name = P2'], ['name = P2']))
        self.point('request', 'mka')  # adds nothing itself, but what is below it does
        self.assertEqual(len(self.lit()[1]), 9)
        self.assertEqual(self.text('said'), 'passed; 9 counterparts')
        self.point('results', 'macsec')  # 9 adds, but some nodes added twice
        self.assertEqual(self.text('said'), '7 counterparts')
        self.leave()
        self.assertEqual(self.lit(), ([], []))
        self.row('results', 'name = P1').click()
        self.point('request', 'policies')
        self.point('request', 'mka')
        self.leave()
        self.assertEqual(self.lit(), (['name = P1'], ['name = P1']))
        self.assertEqual(self.text('said'), '1 counterpart')
        self.assertEqual(self.rows('[role=status], [aria-live]'), [self.text('said')])  # not all the details

    def test_tells_which_of_two_adds_won(self):
        self.open(REPLACE)
        self.point('results', 'key-server-priority = 5')
        self.assertEqual(self.lit(), (['config (replace)', 'key-server-priority = 5'], ['key-server-priority = 5']))
        self.assertEqual(self.lit_lines(), (1, 1))
        self.assertEqual(self.facts(), ['value', '5', 'namespace',
                                        'http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg'])
        self.assertEqual(self.text('what'), "/macsec/policy-names/policy-name[name='P1']/key-server-priority")
        self.assertRegex(self.text('details'), r'#4 for .*/config\b.* \(remove\), lost to #10\n')
        self.assertRegex(self.text('details'), r'#10 for .*/key-server-priority .* = 5, wins over #4')
        self.point('request', 'config (replace)')
        self.assertEqual(self.lit_lines(), (5, 1))
        self.assertEqual(self.facts(), ['operation', 'replace'])
        self.assertIn('#5 /macsec/policy-names/policy-name/cipher-suite (remove)', self.text('details'))
        self.browser.find_element(By.XPATH, '//button[text()="1 lost"]').click()
        self.assertTrue(self.text('details').startswith("/macsec/mka/policies/policy[name='P1']/config\n"))
        self.assertEqual(self.script("""[...document.querySelectorAll('#links path')].filter((path) =>
            getComputedStyle(path).strokeDasharray !== 'none').map((path) => path.getAttribute('class'))"""),
                         ['lost', 'lit lost'])
        self.open(EXAMPLES / 'key-chains/delete-key.xml')
        self.point('results', 'key-id = 01')
        self.assertEqual(self.lit_lines(), (1, 1))
        self.assertIn('not taken: a key keeps its value', self.text('details'))

    def test_tells_what_each_add_did(self):
        self.open(EXAMPLES / 'policies/create.xml')
        self.assertIn('delay-protection = ""', self.rows('#results > *'))
        self.point('results', 'policy-names')
        self.assertIn('Made on the way to the nodes below it.', self.text('details'))
        self.point('request', 'sak-rekey-interval = 3600 (create)')  # its mapper is called by the function that adds
        self.assertEqual(self.rows('#about > ul > li'), [
            'ymap_ot_ocmacsec_policy_sak_rekey_interval_fwd',
            'ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_sakrekeyinterval'
            '#9 /macsec/policy-names/policy-name/sak-rekey-interval-sec = 3600'])
        self.open('<data><macsec xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg"><policy-names>'
                  '<policy-name><name>P</name><conf-offset/></policy-name></policy-names></macsec></data>', '--reverse')
        self.point('request', 'conf-offset = "" dropped')
        self.assertRegex(self.text('details'), r'#4 /macsec/.* = "", not in the result\n')

    def test_finds(self):
        self.open(EXAMPLES / 'policies/merge.xml')
        self.press('/', ' P2 ')
        self.assertEqual(self.text('found'), '3 found')
        for place in '1 of 3', '2 of 3', '3 of 3', '1 of 3':
            self.press(Keys.ENTER)
            self.assertEqual((self.text('found'), self.rows('[aria-selected]')), (place, ['name = P2']))
        find = self.browser.find_element(By.ID, 'find')
        find.send_keys(Keys.SHIFT, Keys.ENTER)
        self.assertEqual(self.text('found'), '3 of 3')
        self.press(Keys.ESCAPE)
        for wanted, rows in ('/cipher-suite', ['cipher-suite = gcm-aes-128']), ('', []), (
                'policyname_name_fwd', ['name = P1', 'name = P2']):
            find.send_keys(Keys.CONTROL, 'a', Keys.NULL, wanted or Keys.DELETE)
            self.assertEqual(self.rows('.found'), rows)
            self.assertEqual(self.text('found'), f'{len(rows)} found' if rows else '')
        find.send_keys(Keys.CONTROL, 'a', Keys.NULL, 'macsec', Keys.ENTER)
        self.assertEqual(self.rows('[aria-selected]'), ['macsec'])
        self.open(EXAMPLES / 'interfaces/attach.xml')
        self.press('/', 'HundredGigE0/0/0/1')
        self.assertEqual(self.rows('.found'), ['name = HundredGigE0/0/0/1', 'name = HundredGigE0/0/0/1',
                                               'interface-name = HundredGigE0/0/0/1'])

    def test_works_with_the_keyboard(self):
        self.open(EXAMPLES / 'policies/merge.xml')
        self.press('/', 'p2', Keys.ENTER)
        self.assertEqual(self.rows('[aria-selected]'), ['name = P2'])
        self.press(Keys.ESCAPE)
        self.assertEqual(self.rows('[aria-selected]'), [])
        self.tab_to('#request')
        self.press(Keys.END)
        self.assertEqual(self.lit(), (['delay-protection = false'], ['delay-protection = false']))
        self.press(Keys.ESCAPE, Keys.UP)  # back first to where the keys have left the tree
        self.assertEqual(self.rows('[aria-selected]'), ['delay-protection = false'])
        self.press(Keys.UP, Keys.ENTER)
        self.assertEqual(self.script('document.activeElement.id'), 'results')
        self.assertEqual(self.rows('#results [aria-selected]'), ['key-server-priority = 20'])
        self.assertEqual(self.script("document.getElementById(document.activeElement.getAttribute("
                                     "'aria-activedescendant')).textContent"), 'key-server-priority = 20')
        self.point('request', 'mka')  # what is selected next goes before what is pointed at
        self.press(Keys.LEFT)
        self.assertEqual(self.lit(), (['policy'], ['policy-name']))
        self.press(Keys.RIGHT, Keys.RIGHT, Keys.DOWN)  # a leaf has nothing to its right
        ActionChains(self.browser).key_down(Keys.CONTROL).send_keys(Keys.END).key_up(Keys.CONTROL).perform()
        self.assertEqual(self.rows('#results [aria-selected]'), ['created'])
        self.tab_to('#details button')
        self.point('request', 'policies')  # lights up, but the link stays
        self.assertEqual(len(self.lit()[1]), 9)
        self.press(Keys.ENTER)
        self.assertEqual(self.rows('[aria-selected]'), ['name = P2'])
        self.assertEqual(self.script('document.activeElement.id'), 'request')
        self.tab_to('#details')
        self.point('request', 'mka')
        self.assertTrue(self.text('details').startswith('/macsec/mka\n'))
        self.leave()
        self.tab_to('#details button')
        self.press(Keys.ESCAPE)
        self.assertEqual((self.rows('[aria-selected]'), self.script('document.activeElement.id')), ([], 'request'))

    def test_shows_a_refusal(self):
        self.open(policies(policy('P1', REFUSED)), status=1)
        self.assertEqual(self.text('refusal'),
                         'refused: this router does not support it, at '
                         "/macsec/mka/policies/policy[name='P1']/config/use-updated-eth-header")
        self.assertEqual(self.rows('.refused'), ['use-updated-eth-header = true refused'])
        self.assertEqual(self.rows('.not-reached'), ['delay-protection = true not reached'])
        self.assertEqual(self.text('results-title'), 'result (native) up to the refusal')
        self.assertEqual(self.text('summary'), '9 nodes: 2 mapped, 5 passed, 1 refused, 1 not reached; 3 adds')
        self.browser.find_element(By.CSS_SELECTOR, '#refusal button').click()
        self.assertEqual(self.text('said'), 'refused: this router does not support it; no counterpart')
        self.open(policies(policy('P1', '<delay-protection/>', 'delete')), status=1)
        self.assertRegex(self.text('refusal'), r'children in the request \(0xaaf2a000\), at /macsec/.*/config$')

    def test_leaves_room_for_the_trees(self):
        """However long a refusal is, and in small windows: the page scrolls to a row, and rows go on to the right."""
        for size in (1200, 700), (640, 360), (320, 256):
            self.emulate(*size)
            self.open(policies(policy('P' * 2000, REFUSED)), status=1)
            self.assertGreater(self.script("document.getElementById('request').clientHeight"), 150, size)
            self.browser.find_element(By.CSS_SELECTOR, '#refusal button').send_keys(Keys.ENTER)
            row = self.script("document.querySelector('[aria-selected]').getBoundingClientRect()")
            self.assertEqual((row['top'] >= 0, row['bottom'] <= size[1]), (True, True), size)
            self.assertEqual(self.script("[...document.querySelectorAll('[role=tree]')].map((tree) => "
                                         "[tree.scrollLeft, tree.scrollWidth])"), [[0, 768], [0, 768]], size)
            self.assertEqual(self.script('document.documentElement.scrollHeight > innerHeight'), size != (1200, 700))

    def test_shows_the_way_back(self):
        self.open(EXAMPLES / 'state/busy-router.xml', '--reverse')
        self.assertEqual(self.browser.title, 'ocmap explain: get, native to OpenConfig')
        native = self.browser.find_element(By.XPATH, '//*[@id="request"]/*[contains(., "gcm-aes-xpn256")]')
        native.click()
        self.assertEqual(self.lit(), (['macsec-cipher-suite = gcm-aes-xpn256'],
                                      ['macsec-cipher-suite = GCM_AES_XPN_256']))

    def test_takes_texts_for_texts(self):
        hostile = '</script><img src=x onerror=alert(1)><!--&amp;\\u003c  \t\x9b\u200b\u2028\u202e\u2066\ufeff'
        self.open(policies(policy(hostile.replace('<', '&lt;').replace('>', '&gt;'))))
        shown = self.script("document.querySelector('#request .value').innerText")
        self.assertEqual(shown, ' = </script><img src=x onerror=alert(1)><!--&\\u003c  '
                         '\\x09\\x9b\\u200b\\u2028\\u202e\\u2066\\ufeff')
        self.assertEqual(self.script("document.querySelectorAll('img').length"), 0)
        self.assertEqual(self.browser.get_log('browser'), [])
        self.assertEqual(self.browser.execute_async_script(
            "const done = arguments[0]; fetch('data:,x').then(() => done('loaded'), () => done('not loaded'))"),
            'not loaded')
        self.assertTrue(all('Content Security Policy' in line['message'] for line in self.browser.get_log('browser')))

    def test_holds_no_key_text(self):
        page = self.open(EXAMPLES / 'key-chains/create.xml')
        self.assertIn('key-clear-text = *** (create)', self.rows())
        self.assertNotRegex(page, '[0-9a-f]{32}')

    def test_is_legible_in_all_colours(self):
        """Contrast as in WCAG 2.1: 1.4.3 of all that is written, 1.4.11 of links and of what marks a row."""
        contrasts = r'''(() => {
            const numbers = (colour) => colour.match(/[\d.]+/g).map(Number);
            const luminance = (colour) => numbers(colour).slice(0, 3).map((c) => c / 255)
                .map((c) => (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
                .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
            const ground = (element) => {
                const own = getComputedStyle(element).backgroundColor;
                return numbers(own)[3] === 0 ? ground(element.parentElement) : own;
            };
            const contrast = (colour, element) => (colour === 'none' ? 0 : ((a, b) => (Math.max(a, b) + 0.05) /
                (Math.min(a, b) + 0.05))(luminance(colour), luminance(ground(element))));
            const least = (css, measure) => Math.min(...[...document.querySelectorAll(css)].map(measure));
            const stroke = (path) => (path.checkVisibility({ opacityProperty: true, visibilityProperty: true })
                ? getComputedStyle(path).stroke : 'none');
            const shadow = (row) => getComputedStyle(row).boxShadow.replace(/\).*/, '');
            return [
                least('#find', (find) => contrast(getComputedStyle(find, '::placeholder').color, find)),
                least('h1, h2, h3, #summary, #find, #found, #refusal, [role=tree] *, #details, #details *, button',
                    (element) => contrast(getComputedStyle(element).color, element)),
                least('#links path', (path) => contrast(stroke(path), path.parentElement)),
                least('[role=treeitem].lit', (row) => Math.max(
                    ...[ground(row), shadow(row)].map((mark) => contrast(mark, row.parentElement)))),
            ];
        })()'''
        refused = policies(policy('P1', '<key-server-priority>5</key-server-priority>', 'replace') +
                           policy('P2', REFUSED))
        grounds = []
        for scheme, forced in ('light', 'none'), ('dark', 'none'), ('light', 'active'), ('dark', 'active'):
            self.emulate(1200, 700, prefers_color_scheme=scheme, forced_colors=forced)
            self.open(refused, status=1)
            self.press('/', 'p1')
            grounds.append(self.script('getComputedStyle(document.body).backgroundColor'))
            unlit = self.row('results', 'key-server-priority = 5').screenshot_as_base64
            for row in 'use-updated-eth-header = true refused', 'config (replace)':
                self.row('request', row).click()
                for found, least in zip(self.script(contrasts), (4.5, 4.5, 3, 3)):
                    self.assertGreaterEqual(found, least, (self.script(contrasts), scheme, forced))
            self.assertNotEqual(self.row('results', 'key-server-priority = 5').screenshot_as_base64, unlit)
            adjust = "getComputedStyle(document.querySelector('[role=treeitem].lit')).forcedColorAdjust"
            self.assertEqual(self.script(adjust) == 'none', forced == 'active')  # else their ground hides the letters
        self.assertNotEqual(grounds[0], grounds[1])

    def test_stays_usable_when_large(self):
        self.open(LARGE)
        self.assertEqual(len(self.rows('#request > *')), 2103)
        self.tab_to('#request')
        number = "Number(document.querySelector('[aria-selected]').id.slice('request'.length))"
        page = self.script("Math.floor(document.getElementById('request').clientHeight / 24) - 1")
        for keys, place in ((Keys.HOME,), 0), ((Keys.PAGE_DOWN,), page), ((Keys.PAGE_DOWN,), 2 * page), (
                (Keys.PAGE_UP,), page), ((Keys.UP, Keys.PAGE_UP), 0), ((Keys.END, Keys.UP, Keys.PAGE_DOWN), 2102):
            self.press(*keys)
            self.assertEqual(self.script(number), place)
        self.press(*[Keys.UP] * (page + 2))  # to the edge, row by row
        self.assertEqual(self.script("document.getElementById('request').scrollTop"), 24 * self.script(number))
        self.press(Keys.ESCAPE, Keys.HOME, Keys.ESCAPE)
        self.point('request', 'mka')
        self.assertLess(self.lines('lit')[0], 50)  # of all 1,750: those that begin or end in view
        find = self.browser.find_element(By.ID, 'find')
        find.send_keys('p222', Keys.ENTER)
        self.assertEqual(self.rows('[aria-selected]'), ['name = P222'])
        place = '''(id) => {
            const row = document.querySelector(id), tree = row.parentElement.getBoundingClientRect();
            const { top, bottom } = row.getBoundingClientRect();
            return top >= tree.top && bottom <= tree.bottom ? Math.round(top) : null;
        }'''
        places = [self.script(f'({place})("{tree} .lit")') for tree in ('#request', '#results')]
        self.assertIsNotNone(places[0])
        self.assertEqual(*places)  # face to face
        middle = self.script("(({ top, height }) => top + height / 2)(document.getElementById('request')"
                             ".getBoundingClientRect())")
        self.assertAlmostEqual(places[0], middle, delta=36)
        results = self.script("document.getElementById('results').scrollTop")
        self.tab_to('#request')
        self.press(Keys.DOWN)  # its counterparts are in view
        self.assertEqual(self.script("document.getElementById('results').scrollTop"), results)
        self.press(Keys.UP)
        self.assertEqual(self.lit_lines(), (2, 0))
        for tree in 'request', 'results':  # one goes to the end, and links are drawn for the other
            self.script(f'document.getElementById("{tree}").scrollTop = 1e6')
            self.assertEqual(self.lit_lines(), (2, 0) if tree == 'request' else (0, 0))


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
