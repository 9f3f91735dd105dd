#!/bin/sh
# Prints an edit-config of N policies (default 100000) with seven leaves each.
awk -v count="${1:-100000}" 'BEGIN {
    print "<rpc message-id=\"1\" xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"
    print "  <edit-config>\n    <target><running/></target>\n    <config>"
    print "      <macsec xmlns=\"http://openconfig.net/yang/macsec\">\n        <mka>\n          <policies>"
    for (i = 1; i <= count; i++) {
        print "<policy>"
        print "<name>P" i "</name>"
        print "<config>"
        print "<name>P" i "</name>"
        print "<key-server-priority>" i % 256 "</key-server-priority>"
        print "<macsec-cipher-suite>GCM_AES_XPN_256</macsec-cipher-suite>"
        print "<confidentiality-offset>30_BYTES</confidentiality-offset>"
        print "<delay-protection>true</delay-protection>"
        print "<include-icv-indicator>true</include-icv-indicator>"
        print "<sak-rekey-interval>3600</sak-rekey-interval>"
        print "</config>"
        print "</policy>"
    }
    print "          </policies>\n        </mka>\n      </macsec>\n    </config>\n  </edit-config>\n</rpc>"
}'
