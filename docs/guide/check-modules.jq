# SPDX-License-Identifier: GPL-2.0-or-later
# For check-modules: what it has asked goes in, a line for each port comes out.
#
# Readings are texts; "" is none, "-inf" no light, and what calibration makes of nonsense may be "nan".

# TX from, to, RX from, to in dBm: launch power and what the receiver takes, without its margin.
def limits: {
  "GPON": [1.5, 7, -28, -8],             # G.984.2 and its amendments, classes B+ and C+; C+ receives down to -32
  "XG-PON": [2, 12.5, -27.5, -7],        # G.987.2, from N1 to E2; those of a long reach receive less
  "1000BASE-SX": [-9.5, 0, -17, 0],      # IEEE 802.3, clause 38
  "1000BASE-LX": [-11, -3, -19, -3],
  "10GBASE-SR": [-7.3, -1, -9.9, -1],    # clause 52
  "10GBASE-LR": [-8.2, 0.5, -14.4, 0.5],
  "10GBASE-ER": [-4.7, 4, -15.8, -1],
  "40GBASE-SR4": [-7.6, 2.4, -9.5, 2.4], # clauses 86 and 87, each lane
  "40GBASE-LR4": [-7, 2.3, -13.7, 2.3],
  "100GBASE-SR4": [-8.4, 2.4, -10.3, 2.4], # clauses 95 and 88
  "100GBASE-LR4": [-4.3, 4.5, -10.6, 4.5]
};

def beyond($name; $low; $high):
  if . == "" then empty
  elif test("inf|nan") then "\($name) \(.)"
  elif tonumber < $low then "\($name) \(.) low"
  elif tonumber > $high then "\($name) \(.) high"
  else empty end;

# Of one path: "" of a GPON or Ethernet path, "xg" of an XG-PON path.  Every lane that has a value counts.
def troubles($of; $temperature; $voltage; $tx; $rx; $kind):
  limits[$kind] as $limit
  | (.[$temperature] | beyond("temperature"; 0; 70)),
    (.[$voltage] | beyond("voltage"; 3.135; 3.465)),
    (if $limit then
       (to_entries[] | select(.key | startswith($tx)) | .value | beyond("TX power"; $limit[0]; $limit[1])),
       (to_entries[] | select(.key | startswith($rx)) | .value | beyond("RX power"; $limit[2]; $limit[3]))
     elif .[$temperature] == "" then empty
     else "powers not judged, kind \($kind)" end)
  | $of + .;

def verdict($board):
  if .present | not then "no module, or its supply is off"
  elif .identifier == "" then "a module of a kind that is not decoded"
  elif .identifier == "N/A (0)" then "a module that does not answer"
  elif .readings.temperature == "" and .readings.xgTemperature == "" then "no diagnostics"
  else
    (if .interfaceType == "pon" then "GPON" else .type end) as $kind
    | .readings
    | [troubles(""; "temperature"; "voltage"; "transmitPower"; "receivePower"; $kind),
       troubles("XG "; "xgTemperature"; "xgVoltage"; "xgTransmitPower"; "xgReceivePower"; "XG-PON"),
       if $board < 0 then "the sign of its temperature is not known" else empty end]
    | if . == [] then "all right" else join(", ") end
  end;

[inputs] as $asked
| $asked[0] as $transceivers
| ($asked[1].temperature | tonumber) as $board
| $asked[2:][]
| . + {readings: $transceivers[.port][0], interfaceType: $transceivers[.port][0].interfaceType}
| "\(.port): \(verdict($board))"
