"""The statements of a saved database, as claims that a simulation can check."""

import xml.etree.ElementTree as ElementTree


class Claim:
    """`rows` lists the values that the `terms` may have together; a term is (side, name, inverted)."""

    def __init__(self, text, terms, rows):
        self.text = text
        self.terms = terms
        self.rows = rows


def _keypoints(tree, side):
    """Names by number: the name of a signal, or of a cell and its pin."""
    names = {}
    for each in tree.iter("key_points_set"):
        if each.get("type") == side:
            for keypoint in each.iter("key_point"):
                name = keypoint.findtext("name")
                if keypoint.find("entity") is not None:
                    name += "." + keypoint.findtext("reg_type")
                names[keypoint.get("id")] = name
    return names


def _groups(transformation, side, names):
    """For each state bit, all registers that hold it, as terms; the first one represents them."""
    groups = []
    for each in transformation.findall("kp_set"):
        if each.get("type") == side:
            for bit in sorted(each.findall("kp_state"), key=lambda state: int(state.get("index"))):
                groups.append([(side, names[kp.get("id")], part.tag == "inverts")
                               for part in bit for kp in part.iter("kp") if kp.get("id") in names])
    return groups


def _bits(state, side):
    return [int(value.text) for value in sorted(state.find(side), key=lambda value: int(value.get("index")))]


def _equal(first, second):
    text = "%s %s %s" % (first[1], "=" if first[2] == second[2] else "~", second[1])
    return Claim(text, [first, second], [(0, 0), (1, 1)])


def _machine(transformation, reference, transformed):
    table = transformation.find("state_table")
    rows = [tuple(_bits(state, "reference") + _bits(state, "transformed")) for state in table.findall("state")]
    terms = [group[0] for group in reference + transformed]
    text = "machine of %s as %s" % ([group[0][1] for group in reference], [group[0][1] for group in transformed])
    return Claim(text, terms, rows)


def claims(path):
    """All claims of a saved database."""
    tree = ElementTree.parse(path).getroot()
    names = {side: _keypoints(tree, side) for side in ("reference", "transformed")}
    found = []
    for transformation in tree.iter("transformation"):
        reference = _groups(transformation, "reference", names["reference"])
        transformed = _groups(transformation, "transformed", names["transformed"])
        fate = transformation.get("elim_type")
        for group in reference + transformed if fate == "not_eliminated" else []:
            found += [_equal(group[0], other) for other in group[1:]]
        if transformation.find("state_table") is not None:
            found.append(_machine(transformation, reference, transformed))
        elif fate in ("stuck_at_zero", "stuck_at_one"):
            value = int(fate == "stuck_at_one")
            found += [Claim("%s stuck at %d" % (term[1], value ^ term[2]), [term], [(value,)]) for term in reference[0]]
        elif fate == "not_eliminated" and reference and reference[0] and transformed and transformed[0]:
            found.append(_equal(reference[0][0], transformed[0][0]))
    return found
