#!/usr/bin/env python3
"""Opens pages of `ormel-tuning report` in a browser: page_test.py FOLDER PAGE...

Opens each page on a narrow and a wide screen, light and dark, and checks its layout, links, contrast
and keyboard use. Leaves screenshots, PAGE-WIDTH-SCHEME.png, and the printed page, in FOLDER.
"""
import base64
import pathlib
import sys

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.keys import Keys

WIDTHS = (360, 1280)
SCHEMES = ("light", "dark")

# Runs in the page and returns a list of complaints.
CHECKS = r"""
const wrong = [];
const all = selector => [...document.querySelectorAll(selector)];
const expect = (good, what) => good || wrong.push(what);

const root = document.documentElement;
expect(root.scrollWidth <= root.clientWidth,
    `scrolls sideways: ${root.scrollWidth} in ${root.clientWidth}`);
expect(typeof stolen === "undefined", "ran a script of the document");
expect(all("script, iframe, img, object, embed, form").length === 0, "has active elements");
for (const element of all("*"))
    for (const {name, value} of element.attributes) {
        expect(!name.startsWith("on"), `has a handler ${name}`);
        expect(name !== "href" || value.startsWith("#"), `leads to ${value}`);
        expect(name !== "src", `loads ${value}`);
    }
expect(performance.getEntriesByType("resource").length === 0, "loaded something");

const ids = all("[id]").map(element => element.id);
expect(new Set(ids).size === ids.length, "has an id twice");
for (const link of all("a")) {
    const place = document.getElementById(link.hash.slice(1));
    expect(place !== null, `${link.hash} leads nowhere`);
}
for (const finding of all(".finding")) {
    const link = finding.querySelector("h3 a");
    const shown = finding.querySelector(".place .line");
    if (link === null || shown === null) continue;
    const line = document.querySelector(link.hash + " .line");
    expect(line !== null && line.firstChild.data === shown.textContent + (line.children.length ? " " : ""),
        `${finding.id} shows another line than it leads to`);
}
let level = 0;
for (const heading of all("h1, h2, h3, h4")) {
    const next = Number(heading.tagName[1]);
    expect(next <= level + 1, `${heading.textContent} is too deep a heading`);
    level = next;
}
for (const table of all("table"))
    expect(table.querySelector("thead th[scope=col]") !== null, "a table has no header");
for (const picture of all("figure svg"))
    expect(picture.getAttribute("aria-label").length > 10, "a picture has no text");
for (const text of all("figure svg text")) {
    const size = text.getBoundingClientRect();
    const frame = text.closest("svg").getBoundingClientRect();
    expect(size.width === 0 || size.height >= 7, "a picture's text is too small");
    expect(size.right <= frame.right + 1 && size.left >= frame.left - 1,
        `'${text.textContent}' is cut off`);
}
return [...new Set(wrong)];
"""


def browser():
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--hide-scrollbars", "--host-resolver-rules=MAP * ~NOTFOUND"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def contrasts(driver):
    """Text and background colours with too little contrast."""
    return driver.execute_script(r"""
const channel = value => (value /= 255) <= .04045 ? value / 12.92 : ((value + .055) / 1.055) ** 2.4;
const numbers = colour => colour.match(/[\d.]+/g).map(Number);
const light = colour => {
    const [r, g, b] = numbers(colour).map(channel);
    return .2126 * r + .7152 * g + .0722 * b;
};
const ground = element => {
    for (; element !== null; element = element.parentElement) {
        const colour = getComputedStyle(element).backgroundColor;
        if (numbers(colour)[3] !== 0) return colour;
    }
    return "rgb(255, 255, 255)";
};
const poor = new Set();
for (const element of document.querySelectorAll("h1, h2, h3, p, a, code, th, td, span, small, del, ins")) {
    const style = getComputedStyle(element);
    const a = light(style.color), b = light(ground(element));
    const ratio = (Math.max(a, b) + .05) / (Math.min(a, b) + .05);
    if (ratio < 4.5) poor.add(`${element.tagName} ${style.color} on ${ground(element)}`);
}
return [...poor];""")


def follow_finding(driver):
    """Follows a finding's link with the keyboard; returns complaints if its line is not visible."""
    links = driver.find_elements("css selector", ".finding h3 a")
    if not links:
        return []
    links[-1].send_keys(Keys.ENTER)
    seen = driver.execute_script(r"""
const place = document.querySelector(location.hash).getBoundingClientRect();
return place.top >= 0 && place.bottom <= innerHeight && place.height > 0;""")
    return [] if seen else ["a finding's line is not visible after following its link"]


def check(driver, page, width, scheme, folder):
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": scheme}]})
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
    driver.get(page.resolve().as_uri())
    wrong = driver.execute_script(CHECKS) + contrasts(driver)
    driver.switch_to.active_element.send_keys(Keys.TAB)
    if driver.switch_to.active_element.get_attribute("class") != "skip":
        wrong.append("the first keyboard stop is not the link that skips to the review")
    driver.execute_script("document.activeElement.blur(); scrollTo(0, 0)")
    picture = driver.execute_cdp_cmd("Page.captureScreenshot", {
        "captureBeyondViewport": True,
        "clip": {"x": 0, "y": 0, "width": width, "height": 1600, "scale": 1}})
    target = folder / f"{page.stem}-{width}-{scheme}.png"
    target.write_bytes(base64.b64decode(picture["data"]))
    wrong += follow_finding(driver)
    wrong += [f"console: {entry['message']}" for entry in driver.get_log("browser")]
    return wrong


def print_page(driver, page, folder):
    printed = driver.execute_cdp_cmd("Page.printToPDF", {
        "preferCSSPageSize": True, "printBackground": True})
    (folder / f"{page.stem}.pdf").write_bytes(base64.b64decode(printed["data"]))


def main():
    folder = pathlib.Path(sys.argv[1])
    failures = 0
    driver = browser()
    try:
        for page in map(pathlib.Path, sys.argv[2:]):
            for width in WIDTHS:
                for scheme in SCHEMES:
                    for what in check(driver, page, width, scheme, folder):
                        print(f"{page.name}, {width} wide, {scheme}: {what}")
                        failures += 1
            print_page(driver, page, folder)
    finally:
        driver.quit()
    print(f"{len(sys.argv) - 2} pages, {failures} complaints")
    return 1 if failures else 0


sys.exit(main())
