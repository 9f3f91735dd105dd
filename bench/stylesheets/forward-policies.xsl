<?xml version="1.0"?>
<!-- Makes of an edit of MKA policies the native tree that `ocmap forward` makes. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0" xmlns:oc="http://openconfig.net/yang/macsec"
                xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg"
                exclude-result-prefixes="nc oc">
  <xsl:output method="xml" omit-xml-declaration="yes"/>

  <xsl:template match="/">
    <config xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
      <macsec xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg">
        <policy-names>
          <xsl:apply-templates select="nc:rpc/nc:edit-config/nc:config/oc:macsec/oc:mka/oc:policies/oc:policy"/>
        </policy-names>
      </macsec>
    </config>
  </xsl:template>

  <xsl:template match="oc:policy">
    <policy-name>
      <name><xsl:value-of select="oc:name"/></name>
      <created/>
      <xsl:apply-templates select="oc:config/*"/>
    </policy-name>
  </xsl:template>

  <xsl:template match="oc:name"/>

  <xsl:template match="oc:key-server-priority">
    <key-server-priority><xsl:value-of select="."/></key-server-priority>
  </xsl:template>

  <xsl:template match="oc:macsec-cipher-suite">
    <cipher-suite>
      <xsl:choose>
        <xsl:when test=". = 'GCM_AES_128'">gcm-aes-128</xsl:when>
        <xsl:when test=". = 'GCM_AES_256'">gcm-aes-256</xsl:when>
        <xsl:when test=". = 'GCM_AES_XPN_128'">gcm-aes-xpn-128</xsl:when>
        <xsl:when test=". = 'GCM_AES_XPN_256'">gcm-aes-xpn-256</xsl:when>
        <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
      </xsl:choose>
    </cipher-suite>
  </xsl:template>

  <xsl:template match="oc:confidentiality-offset">
    <conf-offset>
      <xsl:choose>
        <xsl:when test=". = '0_BYTES'">conf-off-set-0</xsl:when>
        <xsl:when test=". = '30_BYTES'">conf-off-set-30</xsl:when>
        <xsl:when test=". = '50_BYTES'">conf-off-set-50</xsl:when>
        <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
      </xsl:choose>
    </conf-offset>
  </xsl:template>

  <xsl:template match="oc:delay-protection">
    <delay-protection><xsl:if test=". != 'true'"><xsl:value-of select="."/></xsl:if></delay-protection>
  </xsl:template>

  <xsl:template match="oc:include-icv-indicator">
    <include-icv-indicator><xsl:if test=". != 'true'"><xsl:value-of select="."/></xsl:if></include-icv-indicator>
  </xsl:template>

  <xsl:template match="oc:sak-rekey-interval">
    <sak-rekey-interval-sec><xsl:value-of select="."/></sak-rekey-interval-sec>
  </xsl:template>
</xsl:stylesheet>
