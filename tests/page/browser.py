"""A browser without a window that opens pages from disk, and knows what they asked for and complained of."""
import json
import os
import shutil
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.common.exceptions import WebDriverException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

PATIENCE = 120  # seconds; only what hangs takes as long


class Browser:
    def __init__(self, width=1280, height=860, dark=False):
        self.profile = tempfile.mkdtemp(prefix="ovphone-browser-")
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                     "--disable-background-networking", "--disable-component-update", "--disable-sync",
                     "--disable-dev-shm-usage", "--hide-scrollbars", "--user-data-dir=" + self.profile,
                     f"--window-size={width},{height}"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = self.started(options)
        self.driver.set_page_load_timeout(PATIENCE)
        self.driver.set_script_timeout(PATIENCE)
        self.requests = []
        self.resize(width, height)
        self.set_dark(dark)
        self.driver.execute_cdp_cmd("Emulation.setLocaleOverride", {"locale": "en-GB"})
        self.driver.execute_cdp_cmd("Emulation.setTimezoneOverride", {"timezoneId": "Europe/Berlin"})

    def started(self, options):
        environment = {**os.environ, "HOME": self.profile, "XDG_CONFIG_HOME": self.profile, "XDG_CACHE_HOME": self.profile}
        for left in (2, 1, 0):  # another program may have taken the port that was free
            try:
                return webdriver.Chrome(service=Service("/usr/bin/chromedriver", env=environment), options=options)
            except WebDriverException:
                if left == 0:
                    raise

    def resize(self, width, height):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def set_dark(self, dark):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                    {"features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})

    def close(self):
        self.driver.quit()
        shutil.rmtree(self.profile, ignore_errors=True)

    def open(self, folder, section="overview"):
        self.driver.get("about:blank")
        self.driver.get_log("performance")  # what the browser itself has opened
        self.driver.get(Path(folder).resolve().joinpath("index.html").as_uri() + "#" + section)
        self.wait_for_section(section)

    def wait_for_section(self, section):
        name = section.split("/")[0]
        self.wait(lambda: self.run("return document.getElementById('main').dataset.shown") == name, "section " + name)

    def go(self, section):
        self.click(f"nav a[href='#{section}']")
        self.wait_for_section(section)

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def wait(self, condition, what):
        return WebDriverWait(self.driver, PATIENCE, poll_frequency=0.05).until(lambda _: condition(), "waited for " + what)

    def find(self, selector):
        return self.wait(lambda: self.all(selector), selector)[0]

    def all(self, selector):
        """What is shown of what the selector names."""
        return [element for element in self.driver.find_elements(By.CSS_SELECTOR, selector) if element.is_displayed()]

    def texts(self, selector):
        return [element.text for element in self.all(selector)]

    def click(self, selector):
        self.find(selector).click()

    def press(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def focused(self):
        return self.driver.switch_to.active_element

    def complaints(self):
        """What stands on the console."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def foreign_requests(self):
        """Addresses that were asked for and are no files."""
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] in ("Network.requestWillBeSent", "Network.webSocketCreated"):
                parameters = message["params"]
                self.requests.append(parameters.get("url") or parameters["request"]["url"])
        return [url for url in self.requests if not url.startswith(("file:", "about:", "data:"))]

    def unnamed_controls(self):
        """What a screen reader has no name for."""
        tree = self.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        roles = {"link", "button", "textbox", "searchbox", "combobox", "radio", "list", "region", "navigation", "image", "dialog", "grid"}
        return [node["role"]["value"] for node in tree if not node["ignored"] and node["role"]["value"] in roles - {"list"}
                and not node.get("name", {}).get("value", "").strip()]

    def screenshot(self, file):
        self.driver.save_screenshot(str(file))
