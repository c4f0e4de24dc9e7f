"""Debian's packages of Apertium pairs, and what is missing for a pair of languages.

The directions are those that the packages of Debian 12 install, without variants of spelling that
nobody asks for by a region.
"""

from typing import Iterable

from .directions import find_path

_PACKAGES = {
    "apertium-afr-nld": "afr-nld nld-afr",
    "apertium-arg-cat": "arg-cat cat-arg",
    "apertium-bel-rus": "bel-rus rus-bel",
    "apertium-br-fr": "br-fr",
    "apertium-cat-ita": "cat-ita ita-cat",
    "apertium-cat-srd": "cat-srd",
    "apertium-dan-nor": "dan-nno dan-nob nno-dan nob-dan",
    "apertium-en-gl": "en-gl gl-en",
    "apertium-eng-cat": "cat-eng cat-eng_US eng-cat eng-cat_valencia",
    "apertium-eng-spa": "eng-spa spa-eng spa-eng_US",
    "apertium-eo-ca": "ca-eo",
    "apertium-eo-en": "en-eo eo-en",
    "apertium-eo-es": "es-eo",
    "apertium-eo-fr": "fr-eo",
    "apertium-es-gl": "es-gl gl-es",
    "apertium-es-pt": "es-pt es-pt_BR pt-es",
    "apertium-es-ro": "ro-es",
    "apertium-eu-en": "eu-en",
    "apertium-eu-es": "eu-es",
    "apertium-fr-es": "es-fr fr-es",
    "apertium-fra-cat": "cat-fra fra-cat",
    "apertium-hbs-eng": "eng-hbs eng-hbs_BS eng-hbs_HR eng-hbs_SR hbs-eng",
    "apertium-hbs-mkd": "hbs-mkd mkd-hbs_BS mkd-hbs_HR mkd-hbs_SR",
    "apertium-hbs-slv": "hbs-slv slv-hbs slv-hbs_BS slv-hbs_HR slv-hbs_SR",
    "apertium-ind-zlm": "ind-zlm zlm-ind",
    "apertium-isl-eng": "isl-eng",
    "apertium-isl-swe": "isl-swe swe-isl",
    "apertium-mkd-bul": "bul-mkd mkd-bul",
    "apertium-mkd-eng": "mkd-eng",
    "apertium-nno-nob": "nno-nob nob-nno",
    "apertium-oc-ca": "ca-oc ca-oc_aran oc-ca oc_aran-ca",
    "apertium-oc-es": "es-oc es-oc_aran oc-es oc_aran-es",
    "apertium-oci-fra": "fra-oci fra-oci_gascon oci-fra oci_gascon-fra",
    "apertium-por-cat": "cat-por cat-por_BR por-cat",
    "apertium-pt-gl": "gl-pt pt-gl",
    "apertium-rus-ukr": "rus-ukr ukr-rus",
    "apertium-spa-arg": "arg-spa spa-arg",
    "apertium-spa-ast": "spa-ast",
    "apertium-spa-cat": "cat-spa spa-cat spa-cat_valencia",
    "apertium-spa-ita": "ita-spa spa-ita",
    "apertium-srd-ita": "ita-srd",
    "apertium-swe-dan": "dan-swe swe-dan",
    "apertium-swe-nor": "nno-swe nob-swe swe-nno swe-nob",
    "apertium-urd-hin": "hin-urd urd-hin",
}


def packages_for(source: str, target: str, installed: Iterable[str]) -> tuple[str, ...]:
    """The packages to add so that Apertium gets from one language to another; none when Debian has
    no way, or when all is there."""
    there = frozenset(installed)
    package_of = {
        direction: package
        for package, directions in _PACKAGES.items()
        for direction in directions.split()
    }
    path = find_path(source, target, there | package_of.keys())
    return tuple(dict.fromkeys(package_of[one] for one in path if one not in there))
