"""The program post-review."""

import os
import subprocess
import sys
import time

from github import Github
from gitlab import Gitlab
from review import Publisher, Unusable, failure, load
from service_api import TIMEOUT, Api, ApiError, Unclear

USAGE = """Usage: post-review github|gitlab FILE

Posts FILE, a report of 'korvelcheck check --format github-review' or gitlab-review, as comments on a pull request or merge
request. Comments of earlier calls are updated. Without a usable report, the comment says that the check failed.

REVIEW_TOKEN   the token for the API
REVIEW_STATUS  the exit code of the check; empty if it has none
REVIEW_NAME    tells the reviews of one pull request apart; 'schemas' by default
github: GITHUB_API_URL, GITHUB_GRAPHQL_URL, GITHUB_REPOSITORY, PULL_REQUEST (number), HEAD_SHA (commit)
gitlab: CI_API_V4_URL, CI_MERGE_REQUEST_PROJECT_ID, CI_MERGE_REQUEST_IID, CI_COMMIT_SHA, CI_MERGE_REQUEST_SOURCE_BRANCH_SHA

Exit code: 0 posted; 1 not posted, or without a usable report; 2 wrong usage.
"""
SERVICES = {"github": Github, "gitlab": Gitlab}
MAX_RUNS = 3  # after requests of which it is not known whether they were carried out


def say(text):
    print(f"post-review: {text}", file=sys.stderr)


def top_of_repository():
    done = subprocess.run(["git", "rev-parse", "--show-toplevel"], capture_output=True, text=True, check=False)
    return done.stdout.removesuffix("\n") if done.returncode == 0 else os.getcwd()


def publish(publisher, review, clock):
    for run in range(MAX_RUNS):
        try:
            return publisher.publish(review)
        except Unclear as error:
            if run + 1 == MAX_RUNS:
                raise
            say(f"{error}; looking for what was posted")
            clock.sleep(2**run)
    raise AssertionError


def post(service, file, environment, clock):
    """The exit code."""
    status = 0
    try:
        review = load(file, environment.get("REVIEW_STATUS", ""))
    except Unusable as error:
        say(str(error))
        review, status = failure(str(error)), 1
    publisher = Publisher(service, environment.get("REVIEW_NAME") or "schemas", f"\nChecked: {service.commit}\n")
    if not publish(publisher, review, clock):
        say(f"{service.commit} is no longer the newest commit; its review is not posted")
    for problem in publisher.problems:
        say(problem)
    return 1 if publisher.problems else status


def main(arguments, environment, clock=time, top=None, timeout=TIMEOUT):
    if len(arguments) != 2 or arguments[0] not in SERVICES:
        sys.stderr.write(USAGE)
        return 2
    try:
        token = environment["REVIEW_TOKEN"]
        service = SERVICES[arguments[0]](environment, token, top or top_of_repository(), clock=clock, timeout=timeout)
    except KeyError as error:
        say(f"the variable {error.args[0]} is not set")
        return 2
    except ApiError as error:
        say(str(error))
        return 2
    try:
        return post(service, arguments[1], environment, clock)
    except ApiError as error:
        say(f"the review is not posted: {error}")
    except (AttributeError, LookupError, TypeError, ValueError) as error:
        say(f"the review is not posted: an answer of the service is not as expected: {Api.clean(repr(error), token)}")
    return 1
