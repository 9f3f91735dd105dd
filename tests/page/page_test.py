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

    def tearDown(self):
        self.assertEqual(self.browser.get_log('browser'), [])

    def open(self, document, *options, status=0):
        """Explains a document, or a file, and shows the page; gives its text."""
        file = pathlib.Path(self.directory.name, 'page.html')
        source = document if isinstance(document, pathlib.Path) else '-'
        done = subprocess.run([OCMAP, 'explain', source, '--html', file, *options], text=True, capture_output=True,
                              input=None if source != '-' else document)
        self.assertEqual((done.returncode, done.stdout), (status, ''), done.stderr)
        ActionChains(self.browser).move_by_offset(0, 0).perform()
        self.browser.get(file.as_uri())
        return file.read_text()

    def script(self, text):
        return self.browser.execute_script('return ' + text)

    def rows(self, css='[role=treeitem]'):
        return self.browser.execute_script(
            'return [...document.querySelectorAll(arguments[0])].map((row) => row.textContent)', css)

    def row(self, tree, text):
        """The first row with this text."""
        place = self.rows(f'#{tree} > *').index(text)
        return self.browser.find_element(By.CSS_SELECTOR, f'#{tree} > :nth-child({place + 1})')

    def point(self, tree, text):
        ActionChains(self.browser).move_to_element(self.row(tree, text)).perform()

    def press(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def lit(self):
        return self.rows('#request .lit'), self.rows('#results .lit')

    def lines(self, *classes):
        """How many links are drawn with each of the classes. They are drawn with the next frame."""
        self.browser.execute_async_script('requestAnimationFrame(() => requestAnimationFrame(arguments[0]))')
        return tuple(self.browser.find_element(By.CSS_SELECTOR, f'#links [class="{name}"]').get_attribute('d')
                     .count('M') for name in classes)

    def lit_lines(self):
        """Those that stand, and those that lost."""
        return self.lines('lit', 'lit lost')

    def details(self):
        return self.browser.find_element(By.ID, 'details').text

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
        self.assertEqual(self.browser.find_element(By.ID, 'summary').text, '14 nodes: 7 mapped, 7 passed; 9 adds')
        self.assertEqual(self.script("performance.getEntriesByType('resource').length"), 0)

    def test_lights_counterparts(self):
        self.open(EXAMPLES / 'policies/merge.xml')
        self.assertEqual(self.lit(), ([], []))
        self.point('request', 'macsec-cipher-suite = GCM_AES_128')
        self.assertEqual(self.lit(), (['macsec-cipher-suite = GCM_AES_128'], ['cipher-suite = gcm-aes-128']))
        self.assertEqual(self.lit_lines(), (1, 0))
        self.point('results', 'name = P2')
        self.assertEqual(self.lit(), (['name = P2'], ['name = P2']))
        self.point('request', 'mka')  # adds nothing itself, but what is below it does
        self.assertEqual(len(self.lit()[1]), 9)
        ActionChains(self.browser).move_to_element(self.browser.find_element(By.TAG_NAME, 'h1')).perform()
        self.assertEqual(self.lit(), ([], []))
        self.row('results', 'name = P1').click()
        self.point('request', 'policies')
        self.point('request', 'mka')
        ActionChains(self.browser).move_to_element(self.browser.find_element(By.TAG_NAME, 'h1')).perform()
        self.assertEqual(self.lit(), (['name = P1'], ['name = P1']))

    def test_tells_which_of_two_adds_won(self):
        self.open(REPLACE)
        self.point('results', 'key-server-priority = 5')
        self.assertEqual(self.lit(), (['config (replace)', 'key-server-priority = 5'], ['key-server-priority = 5']))
        self.assertEqual(self.lit_lines(), (1, 1))
        self.assertRegex(self.details(), r'#4 for .*/config\b.* \(remove\), lost to #10\n')
        self.assertRegex(self.details(), r'#10 for .*/key-server-priority .* = 5, wins over #4')
        self.point('request', 'config (replace)')
        self.assertEqual(self.lit_lines(), (5, 1))
        self.assertIn('#5 /macsec/policy-names/policy-name/cipher-suite (remove)', self.details())
        self.browser.find_element(By.XPATH, '//button[text()="1 lost"]').click()
        self.assertTrue(self.details().startswith("/macsec/mka/policies/policy[name='P1']/config\n"))

    def test_works_with_the_keyboard(self):
        self.open(EXAMPLES / 'policies/merge.xml')
        self.press('/', 'p2')
        self.assertEqual(self.browser.find_element(By.ID, 'found').text, '3 found')
        self.press(Keys.ENTER, Keys.ENTER)
        self.assertEqual(self.browser.find_element(By.ID, 'found').text, '2 of 3')
        self.assertEqual(self.rows('[aria-selected]'), ['name = P2'])
        self.browser.find_element(By.ID, 'find').send_keys(Keys.SHIFT, Keys.ENTER, Keys.ENTER)
        self.assertEqual(self.browser.find_element(By.ID, 'found').text, '3 of 3')
        self.press(Keys.BACKSPACE, Keys.BACKSPACE, '/cipher-suite')
        self.assertEqual(self.rows('.found'), ['cipher-suite = gcm-aes-128'])
        self.press(Keys.ESCAPE)
        self.assertEqual(self.rows('[aria-selected]'), [])
        while self.script('document.activeElement.id') != 'request':
            self.press(Keys.TAB)
        self.press(Keys.END)
        self.press(Keys.END)
        self.assertEqual(self.lit(), (['delay-protection = false'], ['delay-protection = false']))
        self.press(Keys.UP, Keys.ENTER)
        self.assertEqual(self.script('document.activeElement.id'), 'results')
        self.assertEqual(self.rows('#results [aria-selected]'), ['key-server-priority = 20'])
        self.assertEqual(self.script("document.getElementById(document.activeElement.getAttribute("
                                     "'aria-activedescendant')).textContent"), 'key-server-priority = 20')
        self.point('request', 'mka')  # what is selected next goes before what is pointed at
        self.press(Keys.LEFT)
        self.assertEqual(self.lit(), (['policy'], ['policy-name']))
        self.press(Keys.RIGHT, Keys.DOWN)
        self.assertEqual(self.rows('#results [aria-selected]'), ['created'])
        self.press(Keys.TAB, Keys.TAB, Keys.ENTER)  # past the details to the first link in them
        self.assertEqual(self.rows('[aria-selected]'), ['name = P2'])
        self.assertEqual(self.script('document.activeElement.id'), 'request')

    def test_shows_a_refusal(self):
        self.open(policies(policy('P1', '<use-updated-eth-header>true</use-updated-eth-header>'
                                  '<delay-protection>true</delay-protection>')), status=1)
        self.assertEqual(self.browser.find_element(By.ID, 'refusal').text,
                         'refused: the node is not supported (0xaaf2ee00), at '
                         "/macsec/mka/policies/policy[name='P1']/config/use-updated-eth-header")
        self.assertEqual(self.rows('.refused'), ['use-updated-eth-header = true refused'])
        self.assertEqual(self.rows('.not-reached'), ['delay-protection = true not reached'])
        self.browser.find_element(By.CSS_SELECTOR, '#refusal button').click()
        self.assertIn('refused: the node is not supported', self.details())

    def test_shows_the_way_back(self):
        self.open(EXAMPLES / 'state/busy-router.xml', '--reverse')
        self.assertEqual(self.browser.title, 'ocmap explain: get, native to OpenConfig')
        native = self.browser.find_element(By.XPATH, '//*[@id="request"]/*[contains(., "gcm-aes-xpn256")]')
        native.click()
        self.assertEqual(self.lit(), (['macsec-cipher-suite = gcm-aes-xpn256'],
                                      ['macsec-cipher-suite = GCM_AES_XPN_256']))

    def test_takes_texts_for_texts(self):
        hostile = '</script><img src=x onerror=alert(1)><!--&amp;\u202e\\u003c'
        self.open(policies(policy(hostile.replace('<', '&lt;').replace('>', '&gt;'))))
        shown = self.script("document.querySelector('#request .value').textContent")
        self.assertEqual(shown, ' = ' + hostile.replace('&amp;', '&'))
        self.assertEqual(self.script("document.querySelectorAll('img').length"), 0)

    def test_holds_no_key_text(self):
        page = self.open(EXAMPLES / 'key-chains/create.xml')
        self.assertIn('key-clear-text = *** (create)', self.rows())
        self.assertNotRegex(page, '[0-9a-f]{32}')

    def test_is_legible_in_light_and_dark(self):
        """Contrast as in WCAG 2.1, 1.4.3, of all that is written, lit or not."""
        contrast = '''(() => {
            const numbers = (colour) => colour.match(/[\\d.]+/g).map(Number);
            const luminance = (rgb) => rgb.slice(0, 3).map((c) => c / 255)
                .map((c) => (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
                .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
            const ground = (element) => {
                const own = numbers(getComputedStyle(element).backgroundColor);
                return own.length === 4 && own[3] === 0 ? ground(element.parentElement) : own;
            };
            return Math.min(...[...document.querySelectorAll('h1, h2, h3, #refusal, [role=tree] *, #details *, button')]
                .map((element) => [luminance(numbers(getComputedStyle(element).color)), luminance(ground(element))])
                .map(([a, b]) => (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05)));
        })()'''
        refused = policies(policy('P1', '<key-server-priority>5</key-server-priority>', 'replace') +
                           policy('P2', '<use-updated-eth-header>true</use-updated-eth-header>'))
        grounds = []
        for scheme in 'light', 'dark':
            self.browser.execute_cdp_cmd('Emulation.setEmulatedMedia',
                                         {'features': [{'name': 'prefers-color-scheme', 'value': scheme}]})
            self.open(refused, status=1)
            grounds.append(self.script('getComputedStyle(document.body).backgroundColor'))
            for row in 'config (replace)', 'use-updated-eth-header = true refused':
                self.row('request', row).click()
                self.assertGreaterEqual(self.script(contrast), 4.5, scheme)
        self.assertNotEqual(*grounds)

    def test_stays_usable_when_large(self):
        self.open(LARGE)
        self.assertEqual(len(self.rows('#request > *')), 2103)
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
        self.assertEqual(self.lit_lines(), (2, 0))
        for tree in 'request', 'results':  # one goes to the end, and links are drawn for the other
            self.script(f'document.getElementById("{tree}").scrollTop = 1e6')
            self.assertEqual(self.lit_lines(), (2, 0) if tree == 'request' else (0, 0))


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
