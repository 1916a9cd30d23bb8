# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Whatever bytes a report has, its page has the same elements, runs nothing of it and leads nowhere."""

import re

import browser
import isolation
import pages
import report_text

HOSTILE = ["</script><script>window.broken = 1</script>", "<img src=x onerror=window.broken=1>", "<!--<script>", "]]>", "--><b>",
           "javascript:window.broken=1", "https://evil.example/", "\"'><svg/onload=window.broken=1>", "{{1}}${1}", "&lt;b&gt;&#60;",
           "\x1b[31m\x1b]0;title\x07", "\u202eabc\u2066\u200f\u061c", "\0\x7f\x85\u2028\u2029", "\ufffe\U000e0041\u200b\ufeff\u00ad", "__proto__"]
# The tree of elements with the names of their attributes.
SKELETON = """
const names = (node) => node.getAttributeNames().filter((name) => !["tabindex", "role", "aria-label"].includes(name)).sort().join(" ");
const tree = (node) => node.tagName + "[" + names(node) + "](" + Array.from(node.children, tree).join("") + ")";
return tree(document.documentElement);
"""
UNSEEN = r"/[\0-\x08\x0b-\x1f\x7f-\x9f\p{Cf}\p{Zl}\p{Zp}\p{DI}]/u"


class HostileReport(browser.BrowserTest):
    def open_everything(self, report):
        self.open(report)
        self.run_script("document.querySelectorAll('details').forEach((one) => { one.open = true; })")
        self.wait(lambda: self.all("#block-list > :last-child pre"), "the text")

    def assert_nothing_is_active(self):
        self.assertIsNone(self.run_script("return window.broken ?? null"))
        self.assertEqual(self.run_script("return document.scripts.length"), 2)
        active = "img, iframe, object, embed, link, base, form, video, audio, [src], [style], [action], [srcdoc], a:not([href^='#'])"
        self.assertEqual(self.all(active), [])
        handlers = "return Array.from(document.querySelectorAll('*')).flatMap((one) => one.getAttributeNames()).filter((name) => name.startsWith('on'))"
        self.assertEqual(self.run_script(handlers), [])
        shown = "document.getElementById('data').remove(); document.scripts[0].remove(); return document.documentElement.textContent"
        self.assertIsNone(self.run_script(f"return (() => {{ {shown} }})().match({UNSEEN})"))

    def test_no_text_changes_the_elements(self):
        self.open_everything(pages.with_texts(pages.example(), lambda text: "plain " + text))
        plain = self.run_script(SKELETON)
        for hostile in HOSTILE:
            with self.subTest(hostile=hostile):
                self.open_everything(pages.with_texts(pages.example(), lambda text, before=hostile: before + " " + text))
                self.assertEqual(self.run_script(SKELETON), plain)
                self.assert_nothing_is_active()

    def test_what_is_not_seen_becomes_visible(self):
        report = pages.empty()
        report["blocks"] = [pages.block(0, 1, "a\x1b[0m \0 \x7f \x9b \u202e \u2066 \u200b \U000e0041 z\n\tend\r\n", name="\u202ename")]
        self.open_everything(report)
        text = self.run_script("return document.querySelector('pre').textContent")
        self.assertEqual(text, "a␛[0m ␀ ␡ \\u{9b} \\u{202e} \\u{2066} \\u{200b} \\u{e0041} z\n\tend␍\n")
        self.assertEqual(self.texts("summary .name"), ["\\u{202e}name"])
        self.assertEqual(self.run_script("return getComputedStyle(document.querySelector('summary .name')).unicodeBidi"), "isolate")

    def test_bytes_of_a_report_stay_text(self):
        hostile = "\n".join(HOSTILE).encode() + b"\xff\xfe\xc3\n"
        report = b"".join(report_text.block(name, hostile) for name in (
            "/usr/bin/dig +time=10 myip.halvik.example", "/sbin/ifconfig -a", "<b onclick=x>\u202e", "/usr/sbin/netstat -rn"))
        page = pages.html(report)
        self.assertEqual(len(re.findall("</?script", page)), 4)
        self.open_text(page)
        self.assertTrue(self.all("h1"))
        self.assert_nothing_is_active()


class Policy(browser.BrowserTest):
    def check_quiet(self):
        """The complaints are what these tests are about."""
        self.assertEqual([url for url in self.requests() if url.startswith("http")], [])

    def test_it_forbids_what_is_not_the_pages_own(self):
        self.open(pages.example())
        self.run_script("""
            const script = document.createElement("script");
            script.textContent = "window.broken = 1";
            document.body.append(script);
            document.body.setAttribute("style", "color: rgb(1, 2, 3)");
            const image = document.createElement("img");
            image.src = "https://evil.example/";
            document.body.append(image);""")
        self.wait(lambda: len(self.seen()) >= 3, "three complaints")
        self.assertIsNone(self.run_script("return window.broken ?? null"))
        self.assertNotEqual(self.run_script("return getComputedStyle(document.body).color"), "rgb(1, 2, 3)")

    def seen(self):
        self.complained = getattr(self, "complained", []) + [one for one in self.complaints() if "Content Security Policy" in one]
        return self.complained

    def test_it_allows_nothing_but_one_style_and_one_script(self):
        policy = re.search(r'http-equiv="Content-Security-Policy" content="([^"]+)"', pages.shell())[1]
        rules = dict(rule.strip().split(" ", 1) for rule in policy.split(";") if rule.strip())
        self.assertEqual({name: rules[name] for name in ("default-src", "base-uri", "form-action")},
                         {"default-src": "'none'", "base-uri": "'none'", "form-action": "'none'"})
        for name in ("style-src", "script-src"):
            self.assertRegex(rules[name], r"^'sha256-[A-Za-z0-9+/]{43}='$")
        self.assertEqual(len(rules), 5)
        self.url = None


isolation.run_tests()
