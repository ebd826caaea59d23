"""A client of a JSON API over HTTP: bounded retries and waiting, no redirects to other hosts, no secrets in messages."""

import http.client
import ipaddress
import json
import re
import time
import urllib.error
import urllib.parse
import urllib.request

MAX_ATTEMPTS = 4  # of one request
MAX_WAIT = 120  # seconds that one run waits in all
MAX_PAGES = 100  # of one list
MAX_REDIRECTS = 3
MAX_BYTES = 50 << 20  # of one answer
TIMEOUT = 30  # seconds without a byte

HINTS = {
    401: "the token is not valid, or has expired",
    403: "the token may not do this; a pull request from a fork gets a token that can only read",
    404: "it does not exist, or the token may not see it",
}


class ApiError(Exception):
    """The API cannot be used; the text is for people. `status` is that of the answer, or None."""

    def __init__(self, text, status=None):
        super().__init__(text)
        self.status = status


class Unclear(ApiError):
    """A request that is not repeatable may or may not have been carried out."""


class Fault(Exception):
    """No complete answer: the request may be repeated."""


class Answer:
    """An answer with any status."""

    def __init__(self, status, headers, body):
        self.status, self.headers, self.body = status, headers, body

    def json(self):
        try:
            return json.loads(self.body) if self.body.strip() else None
        except (UnicodeDecodeError, ValueError) as error:
            raise Fault("the answer is not JSON") from error

    def delay(self, now):
        """Seconds that the service asks to wait before the request is repeated; None if it was not refused for its rate."""
        retry_after = self.headers.get("Retry-After")
        is_used_up = self.headers.get("X-RateLimit-Remaining") == "0" or b"rate limit" in self.body.lower()
        if self.status != 429 and not (self.status == 403 and (retry_after or is_used_up)):
            return None
        if retry_after and retry_after.isdigit():
            return max(int(retry_after), 1)
        reset = self.headers.get("X-RateLimit-Reset") or self.headers.get("RateLimit-Reset") or ""
        return max(int(reset) - int(now), 1) if reset.isdigit() else 60


class NoRedirect(urllib.request.HTTPRedirectHandler):
    """A redirect is an answer as any other."""

    def redirect_request(self, *_):
        return None


def origin_of(url):
    parts = urllib.parse.urlsplit(url)
    return parts.scheme, parts.hostname, parts.port or {"https": 443, "http": 80}.get(parts.scheme)


def is_protected(url):
    """Whether a token may be sent there: by TLS, or within the machine."""
    scheme, host, _ = origin_of(url)
    try:
        is_local = host == "localhost" or ipaddress.ip_address(host or "").is_loopback
    except ValueError:
        is_local = False
    return bool(host) and (scheme == "https" or (scheme == "http" and is_local))


class Api:
    """Requests to one host."""

    def __init__(self, base, headers, secret, clock=time, timeout=TIMEOUT):
        if not is_protected(base):
            raise ApiError(f"{self.clean(base, secret)!r} is no https address; the token is not sent there")
        if not secret:
            raise ApiError("the token is empty; a pull request from a fork gets no secrets")
        self.base, self.headers, self.secret, self.clock, self.timeout = base.rstrip("/"), headers, secret, clock, timeout
        self.waited = 0
        self.opener = urllib.request.build_opener(NoRedirect)

    def get(self, path):
        return self.request("GET", path)[0]

    def get_all(self, path):
        """The elements of all pages of a list."""
        elements = []
        for _ in range(MAX_PAGES):
            page, headers = self.request("GET", path)
            if not isinstance(page, list):
                raise ApiError(f"GET {self.shown(path)}: the answer is no list")
            elements += page
            following = re.search(r'<([^<>]*)>\s*;[^<>,]*\brel="?next"?', headers.get("Link") or "")
            if not following:
                return elements
            path = following[1]
        raise ApiError(f"GET {self.shown(path)}: more than {MAX_PAGES} pages")

    def delete(self, path):
        """An earlier attempt, or somebody else, may have deleted it."""
        try:
            self.request("DELETE", path)
        except ApiError as error:
            if error.status != 404:
                raise

    def request(self, method, path, data=None, repeatable=None):
        """The value and the headers of the answer. Raises Unclear if a request that is not repeatable (POST) had no clear answer."""
        url = urllib.parse.urljoin(self.base + "/", path)
        repeatable = method != "POST" if repeatable is None else repeatable
        body = None if data is None else json.dumps(data).encode()
        for attempt in range(MAX_ATTEMPTS):
            try:
                answer = self.follow(method, url, body)
                delay = answer.delay(self.clock.time())
                if delay is None and answer.status < 500:
                    return self.value(method, url, answer), answer.headers
                problem = f"status {answer.status}"
            except Fault as fault:
                delay, problem = None, str(fault)
            text = f"{method} {self.shown(url)}: {problem}"
            if delay is None and not repeatable:
                raise Unclear(text)
            if attempt + 1 < MAX_ATTEMPTS:
                self.wait(2**attempt if delay is None else delay, text)
        raise ApiError(f"{text}, {MAX_ATTEMPTS} times")

    def wait(self, seconds, text):
        if self.waited + seconds > MAX_WAIT:
            raise ApiError(f"{text}; the next attempt would be in {seconds} s, which is too late")
        self.waited += seconds
        self.clock.sleep(seconds)

    def value(self, method, url, answer):
        if 200 <= answer.status < 300:
            return answer.json()
        try:
            message = answer.json().get("message")
        except (AttributeError, Fault):
            message = None
        text = f"{method} {self.shown(url)}: status {answer.status}"
        for part in (HINTS.get(answer.status), message):
            text += f"; {self.clean(part, self.secret)}" if part else ""
        raise ApiError(text, answer.status)

    def follow(self, method, url, body):
        """The first answer that is no redirect within the host."""
        for _ in range(MAX_REDIRECTS + 1):
            if origin_of(url) != origin_of(self.base):
                raise ApiError(f"{method} {self.shown(url)}: this is another host than that of the API; the token is not sent there")
            answer = self.exchange(method, url, body)
            is_redirect = answer.status in (307, 308) or (method == "GET" and answer.status in (301, 302))
            location = answer.headers.get("Location")
            if not is_redirect or not location:
                return answer
            url = urllib.parse.urljoin(url, location)
        raise ApiError(f"{method} {self.shown(url)}: too many redirects")

    def exchange(self, method, url, body):
        headers = self.headers | ({} if body is None else {"Content-Type": "application/json"})
        request = urllib.request.Request(url, data=body, method=method, headers=headers)
        try:
            with self.opener.open(request, timeout=self.timeout) as answer:
                return self.read(answer)
        except urllib.error.HTTPError as error:
            with error:
                return self.read(error)
        except (OSError, http.client.HTTPException) as error:
            raise Fault(self.clean(getattr(error, "reason", None) or error, self.secret) or type(error).__name__) from None

    @staticmethod
    def read(answer):
        try:
            body = answer.read(MAX_BYTES + 1)
        except (OSError, http.client.HTTPException) as error:
            raise Fault("the answer is not complete") from error
        if len(body) > MAX_BYTES:
            raise ApiError(f"an answer of more than {MAX_BYTES} bytes")
        length = answer.headers.get("Content-Length", "")
        if length.isdigit() and len(body) < int(length):
            raise Fault("the answer is not complete")
        return Answer(answer.status, answer.headers, body)

    def shown(self, url):
        """The path without the query, which says little."""
        return self.clean(urllib.parse.urlsplit(url).path, self.secret)

    @staticmethod
    def clean(text, secret):
        """One short line that starts no command of a service and does not contain the token."""
        line = str(text).replace(secret, "***") if secret else str(text)
        return "".join(c if c.isprintable() else "?" for c in line).replace("##[", "#?[")[:200]
